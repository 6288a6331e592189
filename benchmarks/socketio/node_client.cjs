// The JavaScript client: PORT TRANSPORT TASK WINDOW SECONDS, as ours.
"use strict";
const fs = require("fs");
const { io } = require("socket.io-client");

const [port, transport, task, width, duration] = process.argv.slice(2);
const window = Number(width);
const batch = 500;
const text = "a line of a chat, as people write them";
const bytes = Buffer.alloc(10000, 7);
const socket = io(`http://127.0.0.1:${port}`, { transports: [transport], reconnection: false });

let begun;
let used;
let until;
let count = 0;
const over = () => performance.now() >= until;
const finish = () => {
  const seconds = (performance.now() - begun) / 1e3;
  const { user, system } = process.cpuUsage(used);
  const resident = Number(/VmRSS:\s+(\d+)/.exec(fs.readFileSync("/proc/self/status", "latin1"))[1]);
  console.log(count, seconds, (user + system) / 1e6, resident);
  socket.disconnect();
  setTimeout(() => process.exit(0), 50);
};
let going = true;
const more = (next) => {
  if (going && over()) {
    going = false;
    finish();
  } else if (going) {
    next();
  }
};

const tasks = {
  ack() {
    socket.emit("ack", text, () => { ++count; more(tasks.ack); });
  },
  binary() {
    socket.emit("ack", bytes, () => { ++count; more(tasks.binary); });
  },
  emit() {
    for (let i = 1; i < batch; ++i) socket.emit("emit", i, text);
    socket.emit("ack", 0, () => { count += batch; more(tasks.emit); });
  },
  receive() {
    socket.emit("burst", batch, text);
  },
};
socket.on("item", () => {
  if (++count % batch === 0) more(tasks.receive);
});
socket.on("connect", () => {
  begun = performance.now();
  used = process.cpuUsage();
  until = begun + Number(duration) * 1e3;
  for (let i = 0; i < window; ++i) tasks[task]();
});
socket.on("connect_error", (error) => { console.error(String(error)); process.exit(1); });
setTimeout(() => process.exit(3), 60_000);
