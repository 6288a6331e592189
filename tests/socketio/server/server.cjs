// The reference server as the tests want it: node server.cjs MODULES PORT OPTIONS, where OPTIONS is the server's own as
// JSON, with "jar" besides. It says "listening PORT", and ends after two minutes at the latest.
const [, , modules, port, options] = process.argv;
const { Server } = require(modules + "/socket.io");
const http = require("http").createServer();
const { jar, ...own } = JSON.parse(options || "{}");
const io = new Server(http, { serveClient: false, ...own });

setTimeout(() => process.exit(3), 120_000).unref();

const serve = (socket) => {
  let next = 0;
  socket.on("echo", (...args) => socket.emit("echo", ...args));
  socket.on("ack", (...args) => args.pop()(...args));
  socket.on("silent", () => {});
  socket.on("ask", (...args) => socket.emit("question", ...args, (...answer) => socket.emit("answer", ...answer)));
  socket.on("count", (n) => { next = n === next ? next + 1 : NaN; });
  socket.on("counted", (answer) => answer(String(next)));
  socket.on("burst", (n) => { for (let i = 0; i < n; i++) socket.emit("n", i); });
  socket.on("who", (answer) => answer({
    query: socket.handshake.query, auth: socket.handshake.auth, app: socket.handshake.headers["x-app"] || "",
    cookie: socket.request.headers.cookie || "", transport: socket.conn.transport.name, id: socket.id,
    upgradeCookie: socket.conn.upgradeCookie || "",
  }));
  socket.on("leave", () => socket.disconnect());
  socket.on("kick", () => socket.disconnect(true));
  socket.on("drop", () => socket.conn.close());
  // Closes the connection, and says something to everybody while this client is away.
  socket.on("away", (n) => {
    socket.on("disconnect", () => { for (let i = 0; i < n; i++) io.emit("missed", i, Buffer.from("b")); });
    socket.conn.close();
  });
  socket.on("garbage", (text) => socket.conn.sendPacket("message", text));
};

// The cookies of a WebSocket that takes over from polling.
io.engine.on("headers", (headers, request) => {
  const conn = request._query.transport === "websocket" && io.engine.clients[request._query.sid];
  if (conn) conn.upgradeCookie = request.headers.cookie || "";
  if (!jar || request._query.sid) return;
  // With "jar", a cookie for who has none, and taken back from who brings it.
  const there = (request.headers.cookie || "").includes("jar=");
  const end = new Date(there ? 1.4e12 : Date.now() + 3.6e6);
  headers["Set-Cookie"] = `jar=${there ? "" : "1"}; Expires=${end.toUTCString()}`;
});
io.on("connection", serve);
io.of("/admin").use((socket, next) => {
  if (socket.handshake.auth.token === "secret") return next();
  const error = new Error("not authorized");
  error.data = { code: "E1" };
  next(error);
}).on("connection", serve);

// After a restart the port may be held for a moment.
http.on("error", () => setTimeout(() => http.listen(Number(port), "127.0.0.1"), 50));
http.listen(Number(port), "127.0.0.1", () => console.log("listening " + http.address().port));
