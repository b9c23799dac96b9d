// Writes what the display says, made by the decoder's own encoder: one message a line.
const { pgnToActisenseSerialFormat } = require('@canboat/canboatjs');
const { exchanges } = require('./exchanges');

for (const { said } of exchanges.filter((each) => each.said)) console.log(pgnToActisenseSerialFormat(said));
