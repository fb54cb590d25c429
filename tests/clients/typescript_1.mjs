// The official TypeScript client, version 1: the handshake's generation.
import { Client } from '@modelcontextprotocol/sdk/client/index.js';
import { StdioClientTransport } from '@modelcontextprotocol/sdk/client/stdio.js';
import { drive } from './drive.mjs';

const client = new Client({ name: 'tandrel-tests', version: '1' });
await client.connect(new StdioClientTransport({ command: process.env.TANDREL_BIN, args: ['mcp'] }));
console.log(`  server ${JSON.stringify(client.getServerVersion())}`);
await drive({
    list: async () => (await client.listTools()).tools,
    call: (name, args, options) => client.callTool({ name, arguments: args }, undefined, options),
});
await client.close();
