// The reference server for both clients: node server.cjs TRANSPORT[,TRANSPORT]. It prints its port, and, when a client has
// left, what serving it took, as JSON: seconds, processor time in seconds, and the part of the time in which its event
// loop had something to do. It ends after five minutes at the latest.
"use strict";
const { performance } = require("perf_hooks");
const { Server } = require("socket.io");
const http = require("http").createServer();
const io = new Server(http, { serveClient: false, transports: process.argv[2].split(",") });

io.on("connection", (socket) => {
  const begun = performance.now();
  const used = process.cpuUsage();
  const loop = performance.eventLoopUtilization();
  socket.on("ack", (...args) => args.pop()(args[0]));
  socket.on("emit", () => {});
  socket.on("burst", (count, text) => { for (let i = 0; i < count; ++i) socket.emit("item", i, text); });
  socket.on("message", (line) => socket.emit("message", line));
  socket.on("bye", (answer) => answer());
  socket.on("disconnect", () => {
    const { user, system } = process.cpuUsage(used);
    console.log(JSON.stringify({
      seconds: (performance.now() - begun) / 1e3,
      processor: (user + system) / 1e6,
      busy: performance.eventLoopUtilization(loop).utilization,
    }));
  });
});
http.listen(0, "127.0.0.1", () => console.log(http.address().port));
setTimeout(() => process.exit(3), 300_000);
