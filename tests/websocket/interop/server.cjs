// Node's `ws` as a server that echoes: prints its port, ends after a minute at the latest.
//
//   node server.cjs [COMPRESSION]      the option perMessageDeflate, as JSON
"use strict";
const { WebSocketServer } = require("ws");

const server = new WebSocketServer({
  host: "127.0.0.1",
  port: 0,
  perMessageDeflate: JSON.parse(process.argv[2] || "false"),
  handleProtocols: (asked) => (asked.has("chat") ? "chat" : false),
});
server.on("listening", () => console.log(server.address().port));
server.on("connection", (socket) => {
  socket.on("message", (data, isBinary) => {
    const text = isBinary ? "" : data.toString();
    if (text === "in parts") {
      socket.send("one, ", { fin: false });
      socket.ping("between");
      socket.send("two, ", { fin: false });
      socket.send("three", { fin: true });
    } else if (text === "goodbye") {
      socket.close(4001, "enough");
    } else {
      socket.send(data, { binary: isBinary });
    }
  });
});
setTimeout(() => process.exit(3), 60000);
