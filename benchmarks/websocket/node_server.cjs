// Node's `ws` as an echo server: prints its port, ends after five minutes at the latest.
"use strict";
const { WebSocketServer } = require("ws");

const server = new WebSocketServer({
  host: "127.0.0.1",
  port: 0,
  perMessageDeflate: { threshold: 0, zlibDeflateOptions: { level: 6 } },
});
server.on("listening", () => console.log(server.address().port));
server.on("connection", (socket) => {
  socket.on("message", (data, isBinary) => socket.send(data, { binary: isBinary }));
});
setTimeout(() => process.exit(3), 300000);
