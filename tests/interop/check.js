// Reads a log of the network's traffic with a decoder that knows nothing of this unit, and holds it against
// exchanges.js. Prints what was said and answered; status 1 when something is not as it must be.
const { readFileSync } = require('fs');
const { isDeepStrictEqual } = require('util');
const { Parser } = require('@canboat/canboatjs/lib/fromPgn');
const { pgnToActisenseSerialFormat } = require('@canboat/canboatjs/lib/toPgn');
const { unit, display, exchanges } = require('./exchanges');

const wholeMessages = 1; // the lines are not frames, however short they are
const decoder = new Parser({ format: wholeMessages });

let failures = 0;
function fail(text) {
    failures += 1;
    console.log(`  FAILS: ${text}`);
}
decoder.on('error', (_, error) => fail(`the decoder: ${error}`));

const hexadecimal = (bytes) => [...bytes].map((byte) => byte.toString(16).padStart(2, '0')).join(' ');
/** Without time and priority, which do not reach the unit. */
const contentOf = (line) => line.split(',').slice(2).join(',');

const traffic = readFileSync(process.argv[2], 'utf8')
    .split('\n')
    .filter(Boolean)
    .map((line) => {
        const [, , pgn, source, destination, , ...bytes] = line.split(',');
        const fields = decoder.parseString(line)?.fields ?? {};
        return { line, pgn: +pgn, source: +source, destination: +destination, bytes: bytes.join(' '), fields };
    });

function readable(value) {
    if (Array.isArray(value)) return value.map(readable).join(', ') || 'empty';
    if (value && typeof value === 'object') return Object.values(value).map(readable).join(' ');
    return String(value ?? 'nothing').replace(/\p{Cc}/gu, '.');
}

function describe({ fields }) {
    if (!fields.list) return `ISO request ${fields.PGN}`;
    const pairs = fields.list.map(({ Parameter, Value }) => `${Parameter}=${Value}`).join(' ');
    return `${fields['Function Code'].toLowerCase()} ${fields.PGN}: ${pairs}`;
}

function faultsOf(answer, heard) {
    const { fields, differs = [], bytes } = answer;
    const faults = Object.entries(fields)
        .filter(([name, expected]) => !isDeepStrictEqual(heard.fields[name], expected))
        .map(([name, expected]) => `${name} is ${readable(heard.fields[name])} instead of ${readable(expected)}`);
    for (const name of Object.keys(heard.fields).filter((each) => !(each in fields) && !differs.includes(each)))
        faults.push(`${name}, ${readable(heard.fields[name])}, is not expected`);
    if (bytes && heard.bytes !== hexadecimal(bytes)) faults.push(`${heard.bytes} instead of ${hexadecimal(bytes)}`);
    return faults;
}

/** The unit sends its newest message first, so its reports overtake each other: the best goes before an earlier one. */
function find(answer, from) {
    const candidates = traffic.filter(
        ({ source, destination, pgn, taken }, index) =>
            index >= from && source === unit && destination === answer.to && pgn === answer.pgn && !taken,
    );
    return candidates.sort((a, b) => faultsOf(answer, a).length - faultsOf(answer, b).length)[0];
}

let place = 0;
for (const { said, answers } of exchanges) {
    console.log(said ? describe(said) : 'by itself');
    if (said) {
        const content = contentOf(pgnToActisenseSerialFormat(said));
        const asked = traffic.findIndex((heard, index) => index >= place && contentOf(heard.line) === content);
        if (asked < 0) {
            fail('it is not in the log');
            continue;
        }
        place = asked + 1;
    }
    for (const answer of answers) {
        const heard = find(answer, place);
        if (!heard) {
            fail(`no ${answer.pgn} ${answer.what} to ${answer.to}`);
            continue;
        }
        heard.taken = true;
        const faults = faultsOf(answer, heard);
        faults.forEach((fault) => fail(`${answer.pgn} ${answer.what}: ${fault}`));
        console.log(`  ${answer.pgn} ${answer.what} to ${answer.to}: ${heard.bytes}`);
    }
}
for (const { line } of traffic.filter((heard) => heard.destination === display && !heard.taken))
    fail(`nobody asked for ${line}`);

console.log(failures ? `\n${failures} failures` : `\nAll ${exchanges.length} exchanges are as they must be.`);
process.exitCode = failures ? 1 : 0;
