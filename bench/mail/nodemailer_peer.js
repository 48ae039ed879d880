// A program as one would write it with nodemailer and a pool of one connection. The rows come from a
// JSON file, because the runtime has no SQLite of its own.
// Usage: node nodemailer_peer.js ROWS.JSON TEMPLATE.HTM TEMPLATE.TXT PORT

const fs = require('fs');
const net = require('net');
const nodemailer = require('nodemailer');

const tokens = ['[Number]', '[Prefix]', '[First Name]', '[Last Name]', '[Full Name]',
  '[Salutation]', '[Phone Number]', '[Fax Number]', '[Email Address]', '[Birthday]',
  '[Anniversary]', '[Travel Date]', '[Return Date]', '[Start Date]', '[Last Date]'];

function merged(text, values) {
  tokens.forEach((token, index) => { text = text.split(token).join(values[index]); });
  return text;
}

// Without Nagle's algorithm, which the library leaves on: each message would wait some 40 ms for a
// delayed acknowledgement, and the comparison would say nothing about the rest.
function connectWithoutDelay(options, callback) {
  const socket = net.connect({ host: options.host, port: options.port, noDelay: true });
  socket.once('error', callback);
  socket.once('connect', () => callback(null, { connection: socket }));
}

async function main() {
  const [rows, htmlFile, plainFile, port] = process.argv.slice(2);
  const html = fs.readFileSync(htmlFile, 'utf8');
  const plain = fs.readFileSync(plainFile, 'utf8');
  const transport = nodemailer.createTransport({
    host: '127.0.0.1', port: Number(port), pool: true, maxConnections: 1, maxMessages: Infinity,
    ignoreTLS: true, getSocket: connectWithoutDelay,
  });
  for (const values of JSON.parse(fs.readFileSync(rows, 'utf8'))) {
    await transport.sendMail({
      from: 'marketing@agency.example',
      to: { name: values[4], address: values[8] },
      subject: merged('Happy birthday, [First Name]!', values),
      text: merged(plain, values),
      html: merged(html, values),
      textEncoding: 'quoted-printable',
    });
  }
  transport.close();
}

main();
