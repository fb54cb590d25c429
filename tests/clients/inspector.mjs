// The official inspector's command line: one process and one helper a call.
import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { checkLook, checkTools, farAway, find } from './drive.mjs';

function inspect(...words) {
    const { status, stdout, stderr } = spawnSync(
        'node_modules/.bin/mcp-inspector',
        ['--cli', process.env.TANDREL_BIN, 'mcp', ...words],
        { encoding: 'utf8', maxBuffer: 64 << 20, timeout: 120_000 },
    );
    return { status, stdout, stderr };
}

function call(tool, args = {}) {
    const words = Object.entries(args).flatMap(([name, value]) => ['--tool-arg', `${name}=${value}`]);
    const { status, stdout, stderr } = inspect('--method', 'tools/call', '--tool-name', tool, ...words);
    let result;
    try {
        result = JSON.parse(stdout);
    } catch {
        assert.fail(`exit status ${status}\n${stdout}\n${stderr}`);
    }
    return { status, result };
}

const listed = inspect('--method', 'tools/list');
assert.equal(listed.status, 0, listed.stderr);
checkTools(JSON.parse(listed.stdout).tools);
console.log('  list: 15 tools');

call('iphone_go_home');
call('iphone_move', farAway);
const look = call('iphone_look');
assert.equal(look.status, 0);
const lines = checkLook(look.result);
const settings = find(lines, 'Settings');
console.log(`  look: ${lines.length} lines of text`);

// Each call is a helper of its own, which has delivered no picture yet: pixels are refused.
const refused = call('iphone_tap', { x: settings.x, y: settings.y });
assert.equal(refused.result.isError, true);
console.log(`  refusal: exit status ${refused.status}, ${refused.result.content[0].text}`);

const [, width, height] = look.result.content[0].text.match(/(\d+) x (\d+) pixels/);
const tapped = call('iphone_tap', { x: settings.x / width, y: settings.y / height, units: 'fractions' });
assert.equal(tapped.status, 0);
call('iphone_wait_until_settled');
find(checkLook(call('iphone_look').result), 'General');
console.log('  tap: opened Settings');

const typed = call('iphone_type', { text: 'hello' });
assert.equal(typed.status, 0, JSON.stringify(typed.result));
console.log('  type: done');
call('iphone_go_home');
