// Writes what the display says, made by the decoder's own encoder: one message a line, in the pace of a patient display.
const { pgnToActisenseSerialFormat } = require('@canboat/canboatjs/lib/toPgn');
const { exchanges } = require('./exchanges');

const distanceMs = 100;

exchanges
    .filter(({ said }) => said)
    .forEach(({ said }, index) => {
        const [, ...message] = pgnToActisenseSerialFormat(said).split(',');
        console.log([new Date(index * distanceMs).toISOString(), ...message].join(','));
    });
