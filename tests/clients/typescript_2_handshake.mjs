import { tryClient } from './typescript_2.mjs';

await tryClient('legacy', 'legacy');
