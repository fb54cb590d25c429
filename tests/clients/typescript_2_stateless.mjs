import { tryClient } from './typescript_2.mjs';

await tryClient({ pin: '2026-07-28' }, 'modern');
