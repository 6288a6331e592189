// Node's `ws` as the client of an echo server: "ok" and what was agreed upon, or what went wrong.
//
//   node client.cjs URL [COMPRESSION]      the option perMessageDeflate, as JSON
"use strict";
const assert = require("assert");
const WebSocket = require("ws");

const sizes = [0, 1, 125, 126, 127, 65535, 65536, 1000000];
const sample = "{\"id\":7,\"name\":\"Zoë 😀\"}";
const messages = sizes.flatMap((size) => [sample.repeat(size / 20), Buffer.alloc(size, size)]);
const came = [];
let pong = "";

const socket = new WebSocket(process.argv[2], ["soap", "chat"], {
  perMessageDeflate: JSON.parse(process.argv[3] || "false"),
});
socket.on("open", () => {
  messages.forEach((message) => socket.send(message));
  socket.ping("are you there");
  socket.send("one, ", { fin: false });
  socket.ping("still there");
  socket.send("two", { fin: true });
});
socket.on("pong", (data) => (pong += data + ";"));
socket.on("message", (data, isBinary) => {
  came.push(isBinary ? data : data.toString());
  if (came.length === messages.length + 1) {
    socket.close(4002, "done, Zoë");
  }
});
socket.on("close", (code) => {
  assert.deepStrictEqual(came, [...messages, "one, two"]);
  assert.strictEqual(pong, "are you there;still there;");
  assert.strictEqual(code, 4002);
  const agreed = socket._extensions["permessage-deflate"]; // the only place where the parameters are told
  const parameters = Object.entries(agreed ? agreed.params : {}).map(([name, value]) => `; ${name}=${value}`);
  console.log(`ok ${socket.protocol} ${socket.extensions}${parameters.join("")}`);
  process.exit(0);
});
setTimeout(() => process.exit(3), 20000);
