// Zones and volumes of the head unit in a Signal K server; a PUT of a volume becomes the command of a display.
const base = 'entertainment.device.headunit.output';
const pgns = { isoRequest: 59904, groupFunction: 126208, zones: 130574, volume: 130582 };
const zones = [1, 2];
const everybody = 255;
const askAgainMs = 5000;
const patienceMs = 5000;

module.exports = (app) => {
    let unitAddress; // unknown until it has spoken
    let asking;
    let commands = []; // that wait for their acknowledgement, which comes in their order

    const send = (pgn, dst, fields) => app.emit('nmea2000JsonOut', { pgn, dst, prio: 3, fields, forceSend: true });
    const sendGroup = (pgn, values, more) =>
        send(pgns.groupFunction, unitAddress, {
            pgn,
            ...more,
            numberOfParameters: values.length,
            list: values.map((value, index) => ({ parameter: index + 1, value })),
        });

    function hear({ pgn, src, fields }) {
        if (pgn === pgns.volume && unitAddress === undefined) {
            unitAddress = src;
            clearInterval(asking);
            sendGroup(pgns.zones, [1], { functionCode: 'Request' });
        }
        const isAnswer = pgn === pgns.groupFunction && fields.functionCode === 'Acknowledge';
        if (isAnswer && fields.pgn === pgns.volume)
            end(commands[0], fields.list.every(({ parameter }) => parameter === 'Acknowledge') ? 200 : 502);
    }

    function end(command, statusCode) {
        if (!commands.includes(command)) return;
        commands = commands.filter((each) => each !== command);
        clearTimeout(command.timer);
        command.done({ state: 'COMPLETED', statusCode });
    }

    /** The unit sets a zone in steps of 2 %; what it has become comes with its report. */
    function setVolume(zone, volume, done) {
        if (typeof volume !== 'number' || !(volume >= 0 && volume <= 1))
            return { state: 'COMPLETED', statusCode: 400, message: 'a volume is a number from 0 to 1' };
        if (unitAddress === undefined)
            return { state: 'COMPLETED', statusCode: 503, message: 'the head unit has not been heard yet' };
        const command = { done };
        command.timer = setTimeout(() => end(command, 504), patienceMs);
        commands.push(command);
        sendGroup(pgns.volume, [zone, Math.round(volume * 100)], { functionCode: 'Command', priority: 8 });
        return { state: 'PENDING' };
    }

    const zonePath = ({ zoneId }, rest) => `${base}.zone${String(zoneId).replace(/\D/g, '')}.${rest}`;
    const mappings = {
        [pgns.volume]: [
            { node: ({ fields }) => zonePath(fields, 'volume.master'), value: ({ fields }) => fields.volume / 100 },
            { node: ({ fields }) => zonePath(fields, 'isMuted'), value: ({ fields }) => fields.mute === 'Yes' },
        ],
        [pgns.zones]: zones.map((zone, index) => ({
            filter: ({ fields }) => fields.list?.[index] !== undefined,
            node: ({ fields }) => zonePath(fields.list[index], 'name'),
            value: ({ fields }) => fields.list[index].name,
        })),
    };

    return {
        id: 'signalk-headunit',
        name: 'Marine audio head unit',
        schema: {},
        start() {
            unitAddress = undefined; // it may have gone meanwhile
            app.emitPropertyValue('pgn-to-signalk', mappings);
            app.on('N2KAnalyzerOut', hear);
            for (const zone of zones)
                app.registerPutHandler('vessels.self', `${base}.zone${zone}.volume.master`, (_context, _path, value, done) =>
                    setVolume(zone, value, done),
                );
            asking = setInterval(() => send(pgns.isoRequest, everybody, { pgn: pgns.volume }), askAgainMs);
        },
        stop() {
            clearInterval(asking);
            commands.forEach((command) => end(command, 503));
            app.removeListener('N2KAnalyzerOut', hear);
        },
    };
};
