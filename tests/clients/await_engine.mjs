// Waits until the engine answers and sees its phone.
const url = `http://127.0.0.1:${process.env.TANDREL_ENGINE_PORT}/status`;
const end = Date.now() + 60_000;

async function isReady() {
    try {
        const status = await (await fetch(url)).json();
        return status.devices.some((device) => device.bluetooth && device.width > 0);
    } catch {
        return false;
    }
}

while (!(await isReady())) {
    if (Date.now() > end) {
        console.error(`no engine with a phone at ${url}`);
        process.exit(1);
    }
    await new Promise((resolve) => setTimeout(resolve, 100));
}
