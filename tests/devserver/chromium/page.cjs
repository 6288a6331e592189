// The dev server's page in Chromium: what happens is seen at once, and a server that comes back is found again.
//
//   node page.cjs DEVSERVER SCREENSHOT
"use strict";
const assert = require("assert");
const { spawn } = require("child_process");
const fs = require("fs");
const os = require("os");
const path = require("path");
const { chromium } = require("playwright-core");

const [program, screenshot] = process.argv.slice(2);
const patience = 15_000; // milliseconds, for one step
const lifetime = "55"; // seconds, of a server and so of the test

const servers = [];
/** Starts a server; its address. It ends with this process. */
function start(port) {
  const server = spawn(program, ["--port", String(port), "--quiet", "--parent", "--lifetime", lifetime],
    { stdio: ["pipe", "pipe", "inherit"] });
  servers.push(server);
  return new Promise((resolve, reject) => {
    server.stdout.once("data", (line) => resolve(new URL(String(line).match(/http:\S+/)[0])));
    server.once("exit", () => reject(new Error("the server ended")));
  });
}

async function post(url, pathAndQuery, body) {
  const answer = await fetch(new URL(pathAndQuery, url),
    { method: "POST", body: JSON.stringify(body), headers: { "Content-Type": "application/json" } });
  await answer.arrayBuffer();
  return answer.status;
}

async function run(browser) {
  const url = await start(0);
  const page = await browser.newPage({ viewport: { width: 1280, height: 900 } });
  page.setDefaultTimeout(patience);
  const complaints = [];
  page.on("console", (message) => message.type() === "error" && complaints.push(message.text()));
  page.on("pageerror", (error) => complaints.push(String(error)));
  const streams = [];
  page.on("websocket", (stream) => streams.push(stream.url()));
  const rows = page.locator("#rows .entry");
  const live = page.locator("#connection.live");
  const count = async (locator, number) => {
    await (number ? locator.nth(number - 1).waitFor() : locator.first().waitFor({ state: "detached" }));
    assert.strictEqual(await locator.count(), number);
  };

  await page.goto(url.href);
  await live.waitFor();
  assert.strictEqual(streams.length, 1);
  assert.ok(streams[0].startsWith(`ws://${url.host}/_dev/stream?`), streams[0]);
  assert.ok(await page.locator("#empty").isVisible());

  // Events appear, the newest first, and are never taken for markup.
  const hostile = "<img src=x onerror=document.title='taken'>";
  assert.strictEqual(await post(url, "/event?resp_type=json", { en: "signup" }), 400);
  await count(rows, 1);
  assert.strictEqual(await post(url, "/event?resp_type=json", { en: hostile }), 400);
  await count(rows, 2);
  assert.deepStrictEqual(await rows.locator(".name").allTextContents(), [hostile, "signup"]);
  await page.locator("#total", { hasText: /^2$/ }).waitFor();
  assert.match(await rows.nth(1).textContent(), /query item portal_id is missing/);
  await rows.nth(1).locator(".row").click();
  await rows.nth(1).locator("pre", { hasText: '"en": "signup"' }).waitFor();
  assert.strictEqual(await page.title(), "zentavo devserver");

  // A button plans a fault, the next event meets it, and then the plan is empty again.
  await page.getByRole("button", { name: "Status 500" }).click();
  await page.locator("#planned b", { hasText: "status=500" }).waitFor();
  assert.strictEqual(await post(url, "/event?resp_type=json", { en: "struck" }), 500);
  await rows.first().locator(".fault", { hasText: "status=500" }).waitFor();
  await page.locator("#planned", { hasText: "Nothing" }).waitFor();

  // What a browser shows of another site gets nothing.
  const stranger = await browser.newPage();
  const opened = await stranger.evaluate((address) => new Promise((resolve) => {
    const stream = new WebSocket(address);
    stream.onopen = () => resolve(true);
    stream.onclose = () => resolve(false);
  }), streams[0]);
  assert.strictEqual(opened, false);
  await stranger.close();

  // Deliveries come in while their tab is looked at.
  await page.getByRole("tab", { name: "In-app deliveries" }).click();
  await page.locator("#deliveries").waitFor();
  assert.ok(await page.locator("#requests").isHidden());
  assert.match(page.url(), /#deliveries$/);
  const deliveries = page.locator("#delivery-rows .delivery");
  await count(deliveries, 0);
  await post(url, "/interaction/v2", { en: "promo_gamified" });
  await count(deliveries, 1);
  // What the app says of it is no request of the app's, and is seen all the same.
  const trace = { event: "promo_gamified", received_bytes: 0, outcome: "noAnswer", problem: "status 400", campaigns: [] };
  assert.strictEqual(await post(url, "/_dev/trace", trace), 200);
  await deliveries.first().locator(".fact", { hasText: "the app: not shown: the app got no answer, status 400" }).waitFor();
  await page.screenshot({ path: screenshot });
  assert.ok(fs.statSync(screenshot).size > 20_000, "there is something to see");

  // A push goes to the device that is chosen; what became of it is seen, and a click that belongs to it.
  await page.getByRole("tab", { name: "Pushes" }).click();
  await page.locator("#pushes").waitFor();
  assert.match(await page.locator("#distributor").textContent(), /--distributor/);
  const token = Buffer.from(`${url.origin}/_push/nobody`).toString("hex");
  for (const identifier of ["0aff", token]) {
    await post(url, "/api/app/identify", { portal_id: 1000, identifier, channel: "ios", device_id: hostile });
  }
  await count(page.locator("#devices .device"), 2);
  await page.locator("#devices .device", { hasText: "/_push/nobody" }).click();
  await page.locator("#push-file").selectOption("rating");
  await page.getByRole("button", { name: "Send push" }).click();
  const pushes = page.locator("#push-rows .delivery");
  await count(pushes, 1);
  assert.match(await pushes.textContent(), /rating.*no app has this endpoint.*no click/s);
  const [{ push_id }] = (await (await fetch(new URL("/_dev/pushes", url))).json()).pushes;
  await (await fetch(new URL(`/track/click?push=${push_id}`, url))).arrayBuffer();
  await pushes.locator(".fact", { hasText: "click × 1" }).waitFor();
  await page.locator("#push-text").fill("no JSON");
  await page.getByRole("button", { name: "Send push" }).click();
  await count(pushes, 2);
  await page.screenshot({ path: screenshot.replace(".png", "-pushes.png"), fullPage: true });
  assert.deepStrictEqual(complaints, []);

  // The server dies, and another takes its place: the page finds it, and shows that one's requests only.
  await page.getByRole("tab", { name: "Requests" }).click();
  servers[0].removeAllListeners("exit");
  servers[0].kill("SIGKILL");
  await page.locator("#connection.lost").waitFor();
  assert.strictEqual(await rows.count(), 7);
  await start(url.port);
  await live.waitFor();
  await count(rows, 0);
  await post(url, "/event?resp_type=json", { en: "again" });
  await count(rows, 1);
  assert.deepStrictEqual(await rows.locator(".name").allTextContents(), ["again"]);
}

async function main() {
  const home = fs.mkdtempSync(path.join(os.tmpdir(), "zentavo-page-"));
  // As root, in a container, it cannot lock itself in; it sees nothing but our own page.
  const browser = await chromium.launch({
    executablePath: "/usr/bin/chromium", chromiumSandbox: process.getuid() !== 0, timeout: patience,
    env: { ...process.env, HOME: home },
  });
  try {
    await run(browser);
  } finally {
    await browser.close();
    for (const server of servers) server.removeAllListeners("exit").kill();
    fs.rmSync(home, { recursive: true, force: true });
  }
}
main().then(() => process.exit(0), (error) => {
  console.error(error);
  process.exit(1);
});
