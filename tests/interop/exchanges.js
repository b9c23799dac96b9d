// What a display asks of the unit and tells it, and what the decoder must read in the answers; in the order of play.
//
// An exchange is `said`, one message in the encoder's form, and its `answers`; what the unit says by itself has no `said`.
// An answer has the fields that the unit and the decoder's definition agree upon. `differs` names the others, whose reasons
// are in docs/marine-network.md; then `bytes` pins the whole message. A field that is read and not named here is a failure, as is a message to the
// display that nobody waits for. Only acknowledgements are to the display: the other numbers have no place for an address.

const unit = 10;
const display = 35;
const everybody = 255;

/** Messages, with the numbers of the fields that are said. */
const supportedZones = { pgn: 130574, numbers: { first: 1 } };
const tone = { zone: 1, fader: 3, balance: 4, subwoofer: 5, treble: 6, middle: 7, bass: 8, lowPass: 12, beyond: 14 };
const zoneConfiguration = { pgn: 130581, numbers: tone };
const zoneParameters = { pgn: 130586, numbers: tone };
const zoneVolume = { pgn: 130582, numbers: { zone: 1, volume: 2, step: 3, mute: 4 } };
const libraryFile = { pgn: 130570 };
const libraryGroup = { pgn: 130571 };
const addressClaim = { pgn: 60928 };
const pgnList = { pgn: 126464 };
const productInformation = { pgn: 126996, numbers: { version: 1 } };
const isoRequestPgn = 59904;
const groupFunctionPgn = 126208;

const up = 0;
const down = 1;

const message = (pgn, fields) => ({ prio: 6, pgn, src: display, dst: unit, fields });
const isoRequest = ({ pgn }) => message(isoRequestPgn, { PGN: pgn });
const group = (kind, { pgn, numbers }, values, more) =>
    message(groupFunctionPgn, {
        'Function Code': kind,
        PGN: pgn,
        ...more,
        'Number of Parameters': Object.keys(values).length,
        list: Object.entries(values).map(([name, value]) => ({ Parameter: numbers[name], Value: value })),
    });
const request = (target, values) => group('Request', target, values);
const command = (target, values) => group('Command', target, values, { Priority: 8 });

const acknowledgement = ({ pgn }, ...parameters) => ({
    what: 'acknowledgement',
    pgn: groupFunctionPgn,
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
const volume = (zone, percent, mute) => ({
    what: 'zone volume',
    pgn: zoneVolume.pgn,
    to: everybody,
    fields: { 'Zone ID': `Zone ${zone}`, Volume: percent, Mute: mute },
    differs: ['Channel'],
    bytes: [zone, percent, mute === 'Yes' ? 0xf7 : 0xf3],
});

/** To a request for one zone. */
const volumeOfOne = (zone, percent) => ({
    what: 'zone volume, of one zone',
    pgn: zoneVolume.pgn,
    to: everybody,
    fields: { 'Zone ID': `Zone ${zone}`, Volume: percent },
    differs: ['Mute', 'Reserved1', 'Channel'],
    bytes: [zone, percent, 3, 0, 0],
});

/** Levels are fader, balance, subwoofer, treble, middle and bass; sound is preset, high-pass on, its frequency. */
const record = (zone, levels, sound) =>
    [zone, 100, ...levels, ...sound, 0, 0, 0, 0, 0, 0, 0].map((byte) => byte & 0xff);
const presets = { 0: 'Flat', 1: 'Rock', 3: 'Jazz', 4: 'Pop', 10: 'Custom' };

const parameters = (zone, levels, sound) => ({
    what: 'zone configuration',
    pgn: zoneParameters.pgn,
    to: everybody,
    fields: {
        'Zone ID': `Zone ${zone}`,
        'Volume limit': 100,
        Fade: levels[0],
        Balance: levels[1],
        'Sub volume': levels[2],
        'EQ - Treble': levels[3],
        'EQ - Mid range': levels[4],
        'EQ - Bass': levels[5],
        'Preset type': presets[sound[0]],
        'Audio filter': sound[1] ? 'High pass' : 'Full range',
        'High pass filter frequency': sound[2],
    },
    differs: ['Low pass filter frequency', 'Channel'],
    bytes: record(zone, levels, sound),
});

const configuration = (zone, levels, sound) => ({
    what: 'zone configuration, old',
    pgn: zoneConfiguration.pgn,
    to: everybody,
    fields: { 'First zone ID': zone },
    differs: ['Zone count', 'Total zone count', 'list'],
    bytes: record(zone, levels, sound),
});

const text = (...parts) => parts.flatMap((part) => (typeof part === 'string' ? [...Buffer.from(part)] : [part]));

const zones = (first) => ({
    what: 'zones',
    pgn: supportedZones.pgn,
    to: everybody,
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
    pgn: supportedZones.pgn,
    to: everybody,
    fields: { 'First zone ID': 0, 'Zone count': 2, 'Total zone count': 2 },
    differs: ['list'],
    bytes: text(0, 2, 2, 1, 8, 1, 'Zone 1', 2, 9, 1, 'Kajüte'),
};

const zonesBriefly = {
    what: 'zones, to an ISO request',
    pgn: supportedZones.pgn,
    to: everybody,
    fields: { 'Total zone count': 2 },
    differs: ['First zone ID', 'Zone count', 'list'],
    bytes: text(0xff, 0, 2, 1, 6, 1, 'Zone 1', 2, 6, 1, 'Cockpit'),
};

const emptyFile = {
    what: 'library file',
    pgn: libraryFile.pgn,
    to: everybody,
    fields: { Source: 'FM' },
    differs: ['Radio Frequency', 'HD Frequency', 'Zone', 'In play queue', 'Locked', 'Reserved1'],
    bytes: [2, ...Array(6).fill(0xff), 0, ...Array(9).fill(0xff), 0, 0, 0, 2, 0, 2, 0],
};

/** What the microcontroller answers by itself. */
const claim = {
    what: 'address claim',
    pgn: addressClaim.pgn,
    to: everybody,
    fields: {
        'Unique Number': 1,
        'Manufacturer Code': 2045,
        'Device Instance Lower': 0,
        'Device Instance Upper': 0,
        'Device Function': 130,
        Spare: 0,
        'Device Class': 'Entertainment',
        'System Instance': 0,
        'Industry Group': 'Marine',
        'Arbitrary address capable': 0,
    },
};
const product = {
    what: 'product information',
    pgn: productInformation.pgn,
    to: everybody,
    fields: {
        'NMEA 2000 Version': 2.1,
        'Product Code': 1,
        'Model ID': 'Marine audio head unit',
        'Software Version Code': 'simulated',
        'Model Version': '1',
        'Model Serial Code': '000001',
        'Certification Level': 0,
        'Load Equivalency': 2,
    },
};
const list = (kind, ...pgns) => ({
    what: 'list of messages',
    pgn: pgnList.pgn,
    to: display,
    fields: { 'Function Code': `${kind} PGN list`, list: pgns.map((pgn) => ({ PGN: pgn })) },
});
const sent = [60928, 126208, 126464, 126996, 130569, 130570, 130571, 130572, 130574, 130581, 130582, 130584, 130585, 130586];

const emptyGroup = { what: 'library group', pgn: libraryGroup.pgn, to: everybody, fields: { Source: 'FM', list: [] } };

// A new unit's values, but for what the scenario sets: high-pass 80 Hz, the preset Jazz, a name for zone 2.
const sound = [3, 1, 80];
const centred = [0, 0, 6, 0, 0, 0];
const tuned = [-3, 5, 9, 1, -2, 6];
const allZero = [0, 0, 0, 0, 0, 0];

const reports = (levels) => [
    configuration(1, levels, sound),
    configuration(2, levels, sound),
    parameters(1, levels, sound),
    parameters(2, levels, sound),
];

const by = (said, ...answers) => ({ said, answers });
const obeyed = (target, values, ...itsReports) =>
    by(command(target, values), acknowledgement(target, ...Object.keys(values).map(() => done)), ...itsReports);
const refused = (target, values, ...statuses) => by(command(target, values), acknowledgement(target, ...statuses));

const exchanges = [
    by(undefined, zones(0)),
    by(isoRequest(addressClaim), claim),
    by(isoRequest(productInformation), product),
    by(isoRequest(pgnList), list('Transmit', ...sent), list('Receive', 59904, 65280, 126208, 130850)),
    by(isoRequest(supportedZones), zonesBriefly),
    by(isoRequest(zoneConfiguration), configuration(1, centred, sound), configuration(2, centred, sound)),
    by(isoRequest(zoneParameters), parameters(1, centred, sound), parameters(2, centred, sound)),
    by(isoRequest(zoneVolume), volume(1, 40, 'No'), volume(2, 40, 'No')),
    by(isoRequest(libraryFile), emptyFile),
    by(isoRequest(libraryGroup), emptyGroup),

    by(request(supportedZones, { first: 0 }), zones(1)),
    by(request(supportedZones, { first: 2 }), zones(2)),
    by(request(zoneConfiguration, { zone: 1 }), configuration(1, centred, sound)),
    by(request(zoneParameters, { zone: 2 }), parameters(2, centred, sound)),
    by(request(zoneParameters, { zone: 3 }), parameters(3, allZero, [0, 0, 0])),
    by(request(zoneVolume, { zone: 1 }), volumeOfOne(1, 40)),
    by(request(productInformation, { version: 1 })), // not one of the unit's

    // A report tells what is set when it is made: only the last of a series says what it must.
    obeyed(zoneParameters, { zone: 1, fader: -3 }),
    obeyed(zoneConfiguration, { zone: 1, balance: 5 }),
    obeyed(zoneParameters, { subwoofer: 9, treble: 1, middle: -2, bass: 6 }, ...reports(tuned)),
    refused(zoneParameters, { zone: 1, fader: 7 }, done, outOfRange),
    refused(zoneParameters, { fader: 1, lowPass: 60 }, done, notSupported),
    refused(zoneParameters, { fader: 1, beyond: 0 }, done, invalid),
    by(request(zoneParameters, { zone: 1 }), parameters(1, tuned, sound)),

    obeyed(zoneVolume, { zone: 2, volume: 60 }, volume(2, 60, 'No')),
    obeyed(zoneVolume, { zone: 1, step: up }, volume(1, 42, 'No')),
    obeyed(zoneVolume, { zone: 0, step: down }, volume(1, 40, 'No'), volume(2, 58, 'No')),
    refused(zoneVolume, { zone: 1, volume: 150 }, done, outOfRange),
    refused(zoneVolume, { zone: 3, volume: 50 }, outOfRange, done),
    by(request(zoneVolume, { zone: 2 }), volumeOfOne(2, 58)),
    by(request(zoneVolume, { zone: 0 }), volume(1, 40, 'No'), volume(2, 58, 'No')),

    obeyed(zoneVolume, { zone: 1, volume: 0 }, volume(1, 0, 'No')),
    by(request(zoneVolume, { zone: 0 }), volume(1, 0, 'Yes'), volume(2, 58, 'No')),

    // The mute field toggles, whatever its value.
    obeyed(zoneVolume, { zone: 1, mute: 1 }, volume(1, 0, 'Yes'), volume(2, 58, 'Yes')),
    by(isoRequest(zoneVolume), volume(1, 0, 'Yes'), volume(2, 58, 'No')),
    obeyed(zoneVolume, { zone: 1, mute: 1 }, volume(1, 0, 'No'), volume(2, 58, 'No')),

    by(undefined, zonesWithUmlaut),
];

module.exports = { unit, display, exchanges };
