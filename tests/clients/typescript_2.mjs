// The official TypeScript client, version 2, in the generation asked for.
import { Client } from '@modelcontextprotocol/client';
import { StdioClientTransport } from '@modelcontextprotocol/client/stdio';
import assert from 'node:assert/strict';
import { drive } from './drive.mjs';

export async function tryClient(mode, era) {
    const client = new Client({ name: 'tandrel-tests', version: '2' }, { versionNegotiation: { mode } });
    await client.connect(new StdioClientTransport({ command: process.env.TANDREL_BIN, args: ['mcp'] }));
    assert.equal(client.getProtocolEra(), era);
    console.log(`  protocol ${client.getNegotiatedProtocolVersion()}`);
    await drive({
        list: async () => (await client.listTools()).tools,
        call: (name, args, options) => client.callTool({ name, arguments: args }, options),
    });
    await client.close();
}
