// What every client does with the phone. `list()` gives the tools, `call(tool, arguments, options)` a
// result; the options may hold a signal to cancel and a function to tell of progress.
import assert from 'node:assert/strict';

// Width and height of a PNG or JPEG, read from its own header.
function sizeOf(bytes) {
    if (bytes.readUInt32BE(0) === 0x89504e47) return [bytes.readUInt32BE(16), bytes.readUInt32BE(20)];
    assert.equal(bytes.readUInt16BE(0), 0xffd8, 'neither PNG nor JPEG');
    for (let at = 2; at < bytes.length; at += 2 + bytes.readUInt16BE(at + 2)) {
        const marker = bytes[at + 1];
        const isFrame = marker >= 0xc0 && marker <= 0xcf && ![0xc4, 0xc8, 0xcc].includes(marker);
        if (isFrame) return [bytes.readUInt16BE(at + 7), bytes.readUInt16BE(at + 5)];
    }
    assert.fail('a JPEG without a size');
}

function textOf(result) {
    return result.content.find((block) => block.type === 'text').text;
}

export function checkTools(tools) {
    assert.equal(tools.length, 15);
    for (const tool of tools) {
        assert.match(tool.name, /^iphone_/);
        assert.equal(tool.inputSchema.type, 'object');
        assert.equal(typeof tool.annotations.readOnlyHint, 'boolean');
    }
}

// The lines of text on the screen, each with its place.
export function checkLook(result) {
    assert.ok(!result.isError, textOf(result));
    assert.deepEqual(result.content.map((block) => block.type), ['text', 'image']);
    assert.equal(result.structuredContent, undefined);
    const text = textOf(result);
    const image = Buffer.from(result.content[1].data, 'base64');
    const [width, height] = sizeOf(image);
    assert.ok(Math.max(width, height) <= 1568 && image.length <= 500_000);
    assert.ok(text.includes(`${width} x ${height} pixels`), text);
    return [...text.matchAll(/^\((\d+), (\d+)\) \d+x\d+ "(.*?)"/gm)].map(([, x, y, words]) => ({
        x: Number(x),
        y: Number(y),
        words,
    }));
}

export function find(lines, words) {
    const line = lines.find((one) => one.words === words);
    assert.ok(line, `"${words}" is not on the screen: ${lines.map((one) => one.words).join(' | ')}`);
    return line;
}

// A place on the home screen where the pointer covers no text.
export const farAway = { x: 0.5, y: 0.7, units: 'fractions' };

async function done(promise) {
    const result = await promise;
    assert.ok(!result.isError, textOf(result));
    return textOf(result);
}

async function tapWords(call, words) {
    await done(call('iphone_wait_until_settled', {}));
    const { x, y } = find(checkLook(await call('iphone_look', {})), words);
    await done(call('iphone_tap', { x, y }));
}

async function secondsAsked(call) {
    return JSON.parse(await done(call('iphone_get_status', {}))).asking;
}

// The owner is asked before a purchase, and here does not answer; or the app takes the call back.
async function payments(call) {
    await done(call('iphone_go_home', {}));
    await done(call('iphone_move', farAway));
    await tapWords(call, 'Shop');
    await tapWords(call, 'Desk lamp');
    await done(call('iphone_wait_until_settled', {}));
    const buy = find(checkLook(await call('iphone_look', {})), 'Buy now');
    const point = { x: buy.x, y: buy.y };

    const told = [];
    const refused = await call('iphone_tap', point, { onprogress: (progress) => told.push(progress) });
    assert.equal(refused.isError, true);
    assert.match(textOf(refused), /didn't answer .* counts as a no/);
    assert.ok(told.length >= 3, `told of progress ${told.length} times`);
    assert.match(told[0].message, /\d+ s left/);
    console.log(`  refused payment: ${textOf(refused)} (told of progress ${told.length} times)`);

    const takenBack = new AbortController();
    const onprogress = () => takenBack.abort('changed my mind');
    await assert.rejects(call('iphone_tap', point, { onprogress, signal: takenBack.signal }));
    const end = Date.now() + 5_000;
    while ((await secondsAsked(call)) !== undefined) {
        assert.ok(Date.now() < end, 'the owner is still being asked');
    }
    find(checkLook(await call('iphone_look', {})), 'Buy now');
    console.log('  cancelled payment: the question is withdrawn, nothing is bought');
    await done(call('iphone_go_home', {}));
}

export async function drive({ list, call }) {
    checkTools(await list());
    console.log('  list: 15 tools');

    await done(call('iphone_go_home', {}));
    await done(call('iphone_move', farAway));
    await done(call('iphone_wait_until_settled', {}));
    const home = checkLook(await call('iphone_look', {}));
    console.log(`  look: ${home.length} lines of text`);

    const settings = find(home, 'Settings');
    await done(call('iphone_tap', { x: settings.x, y: settings.y }));
    await done(call('iphone_wait_until_settled', {}));
    const opened = checkLook(await call('iphone_look', {}));
    find(opened, 'General');
    console.log('  tap: opened Settings');

    await done(call('iphone_press_key', { key: 'space', modifiers: ['cmd'] }));
    await done(call('iphone_type', { text: 'notes' }));
    await done(call('iphone_wait_until_settled', {}));
    find(checkLook(await call('iphone_look', {})), 'notes');
    console.log('  type: the search shows the text');
    await done(call('iphone_go_home', {}));

    const outside = await call('iphone_tap', { x: 1500, y: 10 });
    assert.equal(outside.isError, true);
    assert.match(textOf(outside), /outside the picture/);
    console.log(`  refusal: ${textOf(outside)}`);
    await assert.rejects(call('iphone_no_such_tool', {}), /Unknown tool/);
    console.log('  unknown tool: a protocol error');
    await payments(call);
}
