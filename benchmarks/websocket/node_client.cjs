// Node's `ws` as a client: PORT SIZE WINDOW SECONDS DEFLATE, as the others.
"use strict";
const WebSocket = require("ws");

const [port, size, window, seconds, deflate] = process.argv.slice(2).map(Number);
let text = "";
for (let i = 0; text.length < size; ++i) {
  text += `{"id":${(i * 7919) % 10007},"name":"item","price":${(i * 104729) % 1009}},`;
}
const message = Buffer.from(text.slice(0, size));
const socket = new WebSocket(`ws://127.0.0.1:${port}/`, {
  perMessageDeflate: deflate ? { threshold: 0, zlibDeflateOptions: { level: 6 } } : false,
});
let count = 0;
let begun;
let used;
socket.on("open", () => {
  begun = process.hrtime.bigint();
  used = process.cpuUsage();
  for (let i = 0; i < window; ++i) socket.send(message);
});
socket.on("message", () => {
  ++count;
  const passed = Number(process.hrtime.bigint() - begun) / 1e9;
  if (passed > seconds) {
    const { user, system } = process.cpuUsage(used);
    console.log(count, passed, (user + system) / 1e6);
    process.exit(0);
  }
  socket.send(message);
});
socket.on("close", () => process.exit(1));
