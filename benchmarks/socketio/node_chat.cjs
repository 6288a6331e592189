// The chat of examples/socketio-client with the JavaScript client: URL.
"use strict";
const { io } = require("socket.io-client");

const socket = io(process.argv[2], { auth: { name: "guest" }, transports: ["websocket"] });
socket.on("connect", () => console.log("connected"));
socket.on("message", (line) => console.log(line));
require("readline").createInterface({ input: process.stdin })
  .on("line", (line) => socket.emit("message", line))
  .on("close", () => socket.timeout(2000).emit("bye", () => process.exit(0)));
