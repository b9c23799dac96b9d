// What an owner sees and does in a Signal K server that has the example's settings and plugin: it finds the unit, its zones and
// their names, also when the plugin is started anew; a volume that is put there is set on the unit, one that is set by a display is
// seen there.
const { spawn } = require('child_process');
const { readFileSync, writeFileSync } = require('fs');
const { createServer } = require('net');
const assert = require('assert');

const [bench, server, settingsFile, folder] = process.argv.slice(2);
const hangMs = 240000;
const pollMs = 200;
const zones = 'vessels/self/entertainment/device/headunit/output';
const children = [];

function start(program, words, environment = {}) {
    const child = spawn(program, words, { cwd: folder, env: { ...process.env, ...environment } });
    child.said = '';
    for (const stream of [child.stdout, child.stderr]) stream.on('data', (text) => (child.said += text));
    child.ended = new Promise((resolve) => child.on('exit', resolve));
    children.push(child);
    return child;
}

/** Until it is something, or nothing can come any more; a test that hangs is ended below. */
let step;
async function until(what, look) {
    for (step = what; ; ) {
        const found = await look();
        if (found !== undefined) return found;
        const gone = children.find(({ exitCode }) => exitCode !== null);
        if (gone) throw new Error(`${gone.spawnfile} has ended before there was ${what}`);
        await new Promise((resolve) => setTimeout(resolve, pollMs));
    }
}

const freePort = () =>
    new Promise((resolve) => {
        const probe = createServer().listen(0, '127.0.0.1', () => {
            const { port } = probe.address();
            probe.close(() => resolve(port));
        });
    });

async function main() {
    const unit = start(bench, ['--no-display', '--stdin']);
    unit.stdin.write('expect engine started\nexpect program radio connected\nexpect mcu source fm\nset 284 Cockpit\nset zone2 1\nset zone2-volume 1\n');
    unit.stdin.write('n2k serve 0 raw\n');
    const port = await until('the port of the lines', () => unit.said.match(/^ *port (\d+)/m)?.[1]);

    const settings = JSON.parse(readFileSync(settingsFile, 'utf8'));
    settings.pipedProviders[0].pipeElements[0].options.subOptions.port = Number(port);
    writeFileSync(`${folder}/settings.json`, JSON.stringify(settings));
    const httpPort = await freePort();
    start(process.execPath, [server, '-c', folder], { PORT: String(httpPort), EXTERNALPORT: String(httpPort) });
    const url = (path) => `http://127.0.0.1:${httpPort}/signalk/v1/api/${path}`;
    const get = async (path) => {
        const answer = await fetch(url(path)).catch(() => undefined);
        return answer?.ok ? answer.json() : undefined;
    };
    const put = async (path, value) => {
        const body = JSON.stringify({ value });
        const answer = await fetch(url(path), { method: 'PUT', headers: { 'Content-Type': 'application/json' }, body });
        const { state, statusCode, href } = await answer.json();
        if (state !== 'PENDING') return statusCode;
        return until(`the outcome of ${value} at ${path}`, async () => {
            const request = await (await fetch(`http://127.0.0.1:${httpPort}${href}`)).json();
            return request.state === 'COMPLETED' ? request.statusCode : undefined;
        });
    };
    const sees = (path, value) =>
        until(`${value} at ${path}`, async () => ((await get(`${zones}/${path}/value`)) === value ? true : undefined));

    await sees('zone1/volume/master', 0.4);
    await sees('zone2/name', 'Cockpit');
    await sees('zone1/isMuted', false);

    assert.equal(await put(`${zones}/zone2/volume/master`, 0.6), 200);
    await sees('zone2/volume/master', 0.6);
    assert.equal(await put(`${zones}/zone2/volume/master`, 0.61), 200);
    await sees('zone2/volume/master', 0.6);
    assert.equal(await put(`${zones}/zone2/volume/master`, 1.5), 400);

    unit.stdin.write('mfd volume 1 20\nmfd mute\n');
    await sees('zone1/volume/master', 0.2);
    await sees('zone1/isMuted', true);

    // Saving the plugin's settings starts it anew: it finds the unit and asks for the names again.
    const named = async () => (await get(`${zones}/zone2/name`))?.timestamp;
    const before = await named();
    const saved = await fetch(`http://127.0.0.1:${httpPort}/skServer/plugins/signalk-headunit/config`, {
        method: 'POST',
        headers: { 'Content-Type': 'application/json' },
        body: JSON.stringify({ enabled: true, configuration: {} }),
    });
    assert.equal(saved.status, 200);
    await until('the names, again', async () => ((await named()) !== before ? true : undefined));

    // It has asked who is there.
    await until('the product', async () =>
        JSON.stringify((await get('sources')) ?? '').includes('Marine audio head unit') ? true : undefined,
    );

    unit.stdin.end('quit\n');
    assert.equal(await unit.ended, 0, unit.said);
}

const hang = setTimeout(() => finish(new Error(`nothing comes: ${step}`)), hangMs);
async function finish(error) {
    clearTimeout(hang);
    for (const child of children) child.kill();
    await Promise.all(children.map(({ ended }) => ended));
    if (!error) return;
    console.log(...children.map(({ said }) => said));
    console.log(error);
    process.exitCode = 1;
}
main().then(() => finish(), finish);
