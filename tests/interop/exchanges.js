// What a display asks of the unit and tells it, and what the decoder must read in the answers; in the order of play.
//
// An exchange is `said`, one message in the encoder's form, and its `answers`; what the unit says by itself has no `said`.
// An answer has the fields that the unit and the decoder's definition agree upon, with a remark where they mean it differently.
// `differs` has those that they do not agree upon, each with the reason; then `bytes` pins the whole message. A field that is
// read and not named here is a failure, as is a message to the display that nobody waits for.

const unit = 10;
const display = 35;
const everybody = 255;


const message = (pgn, fields) => ({ prio: 6, pgn, src: display, dst: unit, fields });
const isoRequest = (pgn) => message(59904, { PGN: pgn });
const group = (kind, pgn, values, more) =>
    message(126208, {
        'Function Code': kind,
        PGN: pgn,
        ...more,
        'Number of Parameters': Object.keys(values).length,
        list: Object.entries(values).map(([number, value]) => ({ Parameter: Number(number), Value: value })),
    });
/** `values` by field number. */
const request = (pgn, values) => group('Request', pgn, values);
const command = (pgn, values) => group('Command', pgn, values, { Priority: 8 });

const acknowledgement = (pgn, ...parameters) => ({
    what: 'acknowledgement',
    pgn: 126208,
    to: display,
    fields: {
        'Function Code': 'Acknowledge',
        PGN: pgn,
        'PGN error code': 'Acknowledge',
        'Transmission interval/Priority error code': 'Acknowledge',
        'Number of Parameters': parameters.length,
        list: parameters.map((each) => ({ Parameter: each })),
    },
});
const done = 'Acknowledge';
const invalid = 'Invalid parameter field';
const outOfRange = 'Parameter out of range';
const notSupported = 'Not supported';

/** As the unit reports it by itself, and to a request for all zones. */
const volume = (zone, percent, mute, to = everybody) => ({
    what: 'zone volume',
    pgn: 130582,
    to,
    fields: { 'Zone ID': `Zone ${zone}`, Volume: percent, Mute: mute },
    remarks: { Mute: 'in an answer, whether the volume is 0; in a report, whether the unit is mute' },
    differs: { Channel: 'not sent: the message ends after three bytes of the eight' },
    bytes: [zone, percent, mute === 'Yes' ? 0xf7 : 0xf3],
});

/** To a request for one zone. */
const volumeOfOne = (zone, percent) => ({
    what: 'zone volume, of one zone',
    pgn: 130582,
    to: display,
    fields: { 'Zone ID': `Zone ${zone}`, Volume: percent },
    differs: {
        Mute: 'always 0: the third byte is 3, which says only that there is no step',
        Reserved1: 'zeros instead of ones, in the same byte',
        Channel: 'a zero byte without a meaning',
    },
    bytes: [zone, percent, 3, 0, 0],
});

/** Tone is fader, balance, subwoofer, treble, middle and bass; sound is preset, high-pass on, its frequency. */
const record = (zone, tone, sound) => [zone, 100, ...tone, ...sound, 0, 0, 0, 0, 0, 0, 0].map((byte) => byte & 0xff);
const signedSteps = 'steps, -6 to 6, where the definition has percent';
const presets = { 0: 'Flat', 1: 'Rock', 3: 'Jazz', 4: 'Pop', 10: 'Custom' };

const parameters = (zone, tone, sound, to = everybody) => ({
    what: 'zone configuration',
    pgn: 130586,
    to,
    fields: {
        'Zone ID': `Zone ${zone}`,
        'Volume limit': 100,
        Fade: tone[0],
        Balance: tone[1],
        'Sub volume': tone[2],
        'EQ - Treble': tone[3],
        'EQ - Mid range': tone[4],
        'EQ - Bass': tone[5],
        'Preset type': presets[sound[0]],
        'Audio filter': sound[1] ? 'High pass' : 'Full range',
        'High pass filter frequency': sound[2],
    },
    remarks: {
        Fade: signedSteps,
        Balance: signedSteps,
        'Sub volume': 'steps from 0, where the definition has percent',
        'EQ - Treble': signedSteps,
        'EQ - Mid range': signedSteps,
        'EQ - Bass': signedSteps,
    },
    differs: {
        'Low pass filter frequency': 'the upper half of the high-pass frequency, which takes 32 bits instead of 16',
        Channel: 'the first byte of the low-pass frequency, which takes 32 bits and starts two bytes later',
    },
    bytes: record(zone, tone, sound),
});

const configuration = (zone, tone, sound, to = everybody) => ({
    what: 'zone configuration, old',
    pgn: 130581,
    to,
    fields: { 'First zone ID': zone },
    differs: {
        'Zone count': 'the unit sends the record of 130586 here, whose second byte is the highest volume',
        'Total zone count': 'the fader',
        list: 'balance, subwoofer, tone and filters, where the definition, which it calls deprecated, has zone names',
    },
    bytes: record(zone, tone, sound),
});

const text = (...parts) => parts.flatMap((part) => (typeof part === 'string' ? [...Buffer.from(part)] : [part]));

const zones = (first, to = display) => ({
    what: 'zones',
    pgn: 130574,
    to,
    fields: {
        'First zone ID': first,
        'Zone count': 2,
        'Total zone count': 2,
        list: [
            { 'Zone ID': 'Zone 1', Name: 'Zone 1' },
            { 'Zone ID': 'Zone 2', Name: 'Cockpit' },
        ],
    },
});

const zonesWithUmlaut = {
    what: 'zones, with a name beyond ASCII',
    pgn: 130574,
    to: everybody,
    fields: { 'First zone ID': 0, 'Zone count': 2, 'Total zone count': 2 },
    differs: { list: 'UTF-8 with the type byte 1, which the decoder takes for ASCII' },
    bytes: text(0, 2, 2, 1, 8, 1, 'Zone 1', 2, 9, 1, 'Kajüte'),
};

const zonesBriefly = {
    what: 'zones, to an ISO request',
    pgn: 130574,
    to: display,
    fields: { 'Total zone count': 2 },
    differs: {
        'First zone ID': 'FF, not known, instead of the first zone',
        'Zone count': '0 instead of 2: a decoder that believes it reads no names',
        list: 'two names follow nevertheless, each with the length 6, whatever the length of its text',
    },
    bytes: text(0xff, 0, 2, 1, 6, 1, 'Zone 1', 2, 6, 1, 'Cockpit'),
};

const libraryFile = {
    what: 'library file',
    pgn: 130570,
    to: everybody,
    fields: { Source: 'FM' },
    differs: {
        'Radio Frequency': 'FF FF FF FF, not known, is read one byte early: the empty name is one byte instead of two',
        'HD Frequency': 'a zero byte for the same reason',
        Zone: 'a zero byte for the same reason',
        'In play queue': 'the length of the empty artist name for the same reason',
        Locked: 'the same byte',
        Reserved1: 'the same byte',
    },
    bytes: [2, ...Array(6).fill(0xff), 0, ...Array(9).fill(0xff), 0, 0, 0, 2, 0, 2, 0],
};

const libraryGroup = { what: 'library group', pgn: 130571, to: everybody, fields: { Source: 'FM', list: [] } };

// The values of a unit that is new, but for what the scenario sets: high-pass 80 Hz, the preset Jazz, a name for zone 2.
const sound = [3, 1, 80];
const centred = [0, 0, 6, 0, 0, 0];
const faded = [-3, 0, 6, 0, 0, 0];
const balanced = [-3, 5, 6, 0, 0, 0];
const tuned = [-3, 5, 9, 1, -2, 6];
const allZero = [0, 0, 0, 0, 0, 0];

const reports = (tone) => [
    configuration(1, tone, sound),
    configuration(2, tone, sound),
    parameters(1, tone, sound),
    parameters(2, tone, sound),
];

const exchanges = [
    { answers: [zones(0, everybody)] },
    { said: isoRequest(130574), answers: [zonesBriefly] },
    { said: isoRequest(130581), answers: [configuration(1, centred, sound), configuration(2, centred, sound)] },
    { said: isoRequest(130586), answers: [parameters(1, centred, sound), parameters(2, centred, sound)] },
    { said: isoRequest(130582), answers: [volume(1, 40, 'No'), volume(2, 40, 'No')] },
    { said: isoRequest(130570), answers: [libraryFile] },
    { said: isoRequest(130571), answers: [libraryGroup] },

    { said: request(130574, { 1: 0 }), answers: [zones(1)] },
    { said: request(130574, { 1: 2 }), answers: [zones(2)] },
    { said: request(130581, { 1: 1 }), answers: [configuration(1, centred, sound, display)] },
    { said: request(130586, { 1: 2 }), answers: [parameters(2, centred, sound, display)] },
    { said: request(130586, { 1: 3 }), answers: [parameters(3, allZero, [0, 0, 0], display)] },
    { said: request(130582, { 1: 1 }), answers: [volumeOfOne(1, 40)] },
    { said: request(126996, { 1: 1 }), answers: [] }, // not one of the unit's

    { said: command(130586, { 1: 1, 3: -3 }), answers: [acknowledgement(130586, done, done), ...reports(faded)] },
    { said: command(130581, { 1: 1, 4: 5 }), answers: [acknowledgement(130581, done, done), ...reports(balanced)] },
    {
        said: command(130586, { 5: 9, 6: 1, 7: -2, 8: 6 }),
        answers: [acknowledgement(130586, done, done, done, done), parameters(2, tuned, sound)],
    },
    { said: command(130586, { 1: 1, 3: 7 }), answers: [acknowledgement(130586, done, outOfRange)] },
    { said: command(130586, { 3: 1, 12: 60 }), answers: [acknowledgement(130586, done, notSupported)] },
    { said: command(130586, { 3: 1, 14: 0 }), answers: [acknowledgement(130586, done, invalid)] },
    { said: request(130586, { 1: 1 }), answers: [parameters(1, tuned, sound, display)] },

    { said: command(130582, { 1: 2, 2: 60 }), answers: [acknowledgement(130582, done, done), volume(2, 60, 'No')] },
    { said: command(130582, { 1: 1, 3: 0 }), answers: [acknowledgement(130582, done, done), volume(1, 42, 'No')] },
    {
        said: command(130582, { 1: 0, 3: 1 }),
        answers: [acknowledgement(130582, done, done), volume(1, 40, 'No'), volume(2, 58, 'No')],
    },
    { said: command(130582, { 1: 1, 2: 150 }), answers: [acknowledgement(130582, done, outOfRange)] },
    { said: command(130582, { 1: 3, 2: 50 }), answers: [acknowledgement(130582, outOfRange, done)] },
    { said: request(130582, { 1: 2 }), answers: [volumeOfOne(2, 58)] },
    {
        said: request(130582, { 1: 0 }),
        answers: [volume(1, 40, 'No', display), volume(2, 58, 'No', display)],
    },

    // Field 4 toggles whatever its value. Asked, the unit says that a zone is mute when its volume is 0, and only then.
    {
        said: command(130582, { 1: 1, 4: 1 }),
        answers: [acknowledgement(130582, done, done), volume(1, 40, 'Yes'), volume(2, 58, 'Yes')],
    },
    { said: isoRequest(130582), answers: [volume(1, 40, 'No'), volume(2, 58, 'No')] },
    {
        said: command(130582, { 1: 1, 4: 1 }),
        answers: [acknowledgement(130582, done, done), volume(1, 40, 'No'), volume(2, 58, 'No')],
    },
    { said: command(130582, { 1: 1, 2: 0 }), answers: [acknowledgement(130582, done, done), volume(1, 0, 'No')] },
    { said: request(130582, { 1: 0 }), answers: [volume(1, 0, 'Yes', display), volume(2, 58, 'No', display)] },
    { answers: [zonesWithUmlaut] },
];

module.exports = { unit, display, exchanges };
