// What requests bring is shown as text only: nothing here makes markup of a string.
const byId = (id) => document.getElementById(id);
const make = (tag, className, text) => {
  const element = document.createElement(tag);
  if (className) element.className = className;
  if (text !== undefined) element.textContent = text;
  return element;
};

const mostRows = 1000;
const rows = byId("rows");
let entries = []; // newest first: {request, element, haystack}
let arrivals = []; // requests not yet shown
let show = "all";
let words = [];
let paused = false;
let settled = false; // the requests from before the page was opened are there
let lastNumber = 0;
let server = null;
let clearings = 0;
const seconds = new Array(60).fill(0); // requests in each of the last 60 seconds, newest last

// ---- theme, address, empty state

const root = document.documentElement;
const wantsDark = matchMedia("(prefers-color-scheme: dark)");
const stored = () => { try { return localStorage.getItem("theme"); } catch { return null; } };
const applyTheme = () => { root.dataset.theme = stored() || (wantsDark.matches ? "dark" : "light"); };
applyTheme();
wantsDark.addEventListener("change", applyTheme);
byId("theme").addEventListener("click", () => {
  const next = root.dataset.theme === "dark" ? "light" : "dark";
  try { localStorage.setItem("theme", next); } catch { /* then only until the page is left */ }
  root.dataset.theme = next;
});

byId("address").textContent = location.origin;
byId("address").addEventListener("click", () => navigator.clipboard?.writeText(location.origin));
byId("snippet").textContent = `sdk->setEndpoints(Endpoints::all("${location.origin}"));`;
byId("curl").textContent = `curl --json '{"en": "hello"}' '${location.origin}/event'`;

// ---- rows

const wordsOf = (request) => [request.event, request.uid, request.screen, request.customer, request.path,
  request.fault, request.status, ...request.problems].join("\n").toLowerCase();

const wanted = (entry) =>
  (show === "all" || (show === "problems" ? entry.request.problems.length > 0 : entry.request.twin === show)) &&
  words.every((word) => entry.haystack.includes(word));

function rowOf(request) {
  const entry = make("article", "entry" + (request.problems.length ? " bad" : ""));
  const row = make("button", "row");
  const time = new Date(request.time);
  row.append(make("span", "time mono", time.toTimeString().slice(0, 8) + "." + request.time.slice(20, 23)));
  row.append(make("span", "tag " + request.twin, request.twin));
  const name = make("span", "name", request.event || "");
  if (!request.event) name.append(make("span", "path", request.method + " " + request.path));
  name.title = name.textContent;
  row.append(name);
  for (const field of ["uid", "screen", "customer"]) {
    const cell = make("span", request[field] ? "" : "dim", request[field] || "–");
    cell.title = cell.textContent;
    row.append(cell);
  }
  row.append(make("span", "code" + (request.status >= 200 && request.status < 300 ? "" : " off"), request.status ?? "none"));
  entry.append(row);
  if (request.fault) entry.append(make("div", "under fault", "⚡ fault " + request.fault));
  const lines = request.problems.map((problem) => "✕ " + problem);
  if (lines.length) entry.append(make("div", "under", lines.slice(0, 4).join("\n")));
  if (lines.length > 4) {
    entry.append(make("div", "under more", `+ ${lines.length - 4} more`), make("div", "under rest", lines.slice(4).join("\n")));
  }
  row.setAttribute("aria-expanded", "false");
  row.addEventListener("click", () => toggle(entry, row, request));
  return entry;
}

async function toggle(entry, row, request) {
  const open = entry.classList.toggle("open");
  row.setAttribute("aria-expanded", open);
  entry.querySelector(".detail")?.remove();
  if (!open) return;
  const detail = make("div", "detail");
  entry.append(detail);
  try {
    const [whole, body] = await Promise.all([
      fetch("/_dev/request?number=" + request.number).then((answer) => (answer.ok ? answer.json() : null)),
      fetch("/_dev/body?number=" + request.number).then((answer) => (answer.ok ? answer.text() : "")),
    ]);
    if (!whole) {
      detail.append(make("h4", "", "No longer kept by the server"));
      return;
    }
    const query = Object.entries(whole.query).map(([key, value]) => key + (value === null ? "" : "=" + value));
    detail.append(make("h4", "", "Request"), make("pre", "", request.method + " " + request.path + (query.length ? "\n  " + query.join("\n  ") : "")));
    detail.append(make("h4", "", `Body · ${request.body_bytes.toLocaleString()} bytes`), bodyView(request, whole, body));
    detail.append(make("h4", "", "Headers"), make("pre", "", Object.entries(whole.headers).map(([key, value]) => key + ": " + value).join("\n")));
  } catch {
    detail.append(make("h4", "", "The server does not answer"));
  }
}

const mostShown = 200_000; // characters of a body

function bodyView(request, whole, body) {
  const view = make("pre");
  if (request.body_kind === "json") pretty(body.slice(0, mostShown), view);
  else view.textContent = request.body_kind === "none" ? "(none)" : String(whole.body).slice(0, mostShown);
  if (body.length > mostShown) view.append("\n… cut here; /_dev/body?number=" + request.number + " has all of it");
  return view;
}

/** Lays JSON text out without reading it into numbers, so that 64-bit ids stay as they were sent. */
function pretty(text, view) {
  const tokens = /"(?:[^"\\]|\\.)*"?|[{}[\],:]|[^\s"{}[\],:]+/g;
  let depth = 0;
  let plain = "";
  const newLine = () => "\n" + "  ".repeat(depth);
  const colored = (className, token) => {
    view.append(plain, make("span", className, token));
    plain = "";
  };
  const list = text.match(tokens) || [];
  list.forEach((token, i) => {
    const next = list[i + 1];
    if (token === "{" || token === "[") {
      const empty = next === "}" || next === "]";
      depth += empty ? 0 : 1;
      plain += token + (empty ? "" : newLine());
    } else if (token === "}" || token === "]") {
      const empty = list[i - 1] === "{" || list[i - 1] === "[";
      depth = Math.max(0, depth - (empty ? 0 : 1));
      plain += (empty ? "" : newLine()) + token;
    } else if (token === ",") plain += "," + newLine();
    else if (token === ":") plain += ": ";
    else colored(token[0] === '"' ? (next === ":" ? "k" : "s") : "n", token);
  });
  view.append(plain);
}

function refresh() {
  let shown = 0;
  for (const entry of entries) {
    const visible = wanted(entry);
    entry.element.hidden = !visible;
    shown += visible ? 1 : 0;
  }
  byId("empty").hidden = entries.length > 0;
  byId("nothing").hidden = entries.length === 0 || shown > 0;
  byId("names").textContent = new Set(entries.map((e) => e.request.event).filter(Boolean)).size;
}

// New rows come in once a frame at most, however fast requests do.
let frame = 0;
function later() {
  if (!frame) frame = requestAnimationFrame(showArrivals);
}
function showArrivals() {
  cancelAnimationFrame(frame);
  frame = 0;
  byId("pause").textContent = paused && arrivals.length ? `Resume (${arrivals.length})` : paused ? "Resume" : "Pause";
  if (paused || !arrivals.length) return;
  const batch = document.createDocumentFragment();
  const fresh = arrivals.map((request) => ({ request, element: rowOf(request), haystack: wordsOf(request) })).reverse();
  arrivals = [];
  for (const entry of fresh) {
    if (settled && fresh.length < 20) entry.element.classList.add("fresh");
    batch.append(entry.element);
  }
  rows.prepend(batch);
  entries = fresh.concat(entries);
  for (const old of entries.splice(mostRows)) old.element.remove();
  refresh();
}

function forgetRows() {
  entries = [];
  arrivals = [];
  rows.replaceChildren();
  byId("notice").hidden = true;
  refresh();
}

byId("filter").addEventListener("input", (event) => {
  words = event.target.value.toLowerCase().split(/\s+/).filter(Boolean);
  refresh();
});
byId("chips").addEventListener("click", (event) => {
  const chip = event.target.closest("button");
  if (!chip) return;
  show = chip.dataset.show;
  for (const other of byId("chips").children) other.classList.toggle("on", other === chip);
  refresh();
});
byId("pause").addEventListener("click", () => {
  paused = !paused;
  byId("pause").classList.toggle("on", paused);
  later();
});
byId("clear").addEventListener("click", () => fetch("/_dev/requests", { method: "DELETE" }).catch(() => {}));

// ---- counters

/** Both clocks are this machine's. */
function countAt(time) {
  const age = Math.max(0, Math.floor((Date.now() - Date.parse(time)) / 1000));
  if (age < seconds.length) seconds[seconds.length - 1 - age] += 1;
}
function drawPulse() {
  const most = Math.max(4, ...seconds);
  const bars = seconds.map((count, i) => {
    const bar = document.createElementNS("http://www.w3.org/2000/svg", "rect");
    const height = count ? Math.max(2, (38 * count) / most) : 1;
    for (const [key, value] of Object.entries({ x: i * 4, y: 40 - height, width: 3, height, rx: 1, opacity: count ? 1 : 0.2 })) bar.setAttribute(key, value);
    return bar;
  });
  byId("pulse").replaceChildren(...bars);
  byId("rate").textContent = seconds[58].toLocaleString();
}
setInterval(() => {
  seconds.shift();
  seconds.push(0);
  drawPulse();
}, 1000);
drawPulse();

function showStatus(status) {
  byId("total").textContent = status.total.toLocaleString();
  byId("problems").textContent = status.with_problems.toLocaleString();
  byId("dropped").textContent = status.dropped.toLocaleString();
  byId("problem-tile").classList.toggle("alert", status.with_problems > 0);
  pushesHeard(status.pushes);
  byId("clear-faults").hidden = status.faults.length === 0;
  const items = status.faults.slice(0, 50).map((fault) => {
    const item = make("li", "mono");
    item.append(make("b", "", fault.fault), ` at ${fault.path}` + (fault.times > 1 ? ` · ${fault.times} times` : ""));
    return item;
  });
  byId("planned").replaceChildren(...(items.length ? items : [make("li", "dim", "Nothing: all goes well.")]));
}

// ---- faults

const faults = [
  ["Status 500", "server error", "status=500"],
  ["Status 404", "not found", "status=404"],
  ["Slow", "2 seconds late", "delay=2000"],
  ["Hang", "never answers", "hang=1"],
  ["Reset", "no answer at all", "reset=before"],
  ["Break off", "half an answer", "reset=mid"],
  ["Empty", "no body", "empty=1"],
  ["Garbage", "not JSON", "body=" + encodeURIComponent("<oops>")],
  ["Drip", "5 bytes/second", "drip=5"],
  ["Huge", "64 MiB of JSON", "size=67108864"],
  ["Redirect", "in circles", "redirect"],
  ["Session", "a session_id", "session_id=dev-session"],
];
const note = (text, bad) => {
  byId("fault-note").textContent = text;
  byId("fault-note").classList.toggle("bad", Boolean(bad));
};
async function plan(parameters) {
  const path = byId("fault-path").value;
  const target = location.origin + (path === "*" ? "/event" : path);
  const what = parameters === "redirect" ? "redirect=" + encodeURIComponent(target) : parameters;
  const query = `path=${encodeURIComponent(path)}&times=${encodeURIComponent(byId("fault-times").value)}&${what}`;
  try {
    const answer = await fetch("/_dev/fault?" + query, { method: "POST" });
    const told = await answer.json();
    note(answer.ok ? "" : (told.problems || [told.error]).join("; "), !answer.ok);
    refreshStatus();
  } catch {
    note("The server does not answer.", true);
  }
}
const refreshStatus = () => fetch("/_dev/status").then((answer) => answer.json()).then(showStatus).catch(() => {});
for (const [name, hint, parameters] of faults) {
  const button = make("button", "", name);
  button.append(make("small", "", hint));
  button.addEventListener("click", () => plan(parameters));
  byId("fault-buttons").append(button);
}
byId("clear-faults").addEventListener("click", () =>
  fetch("/_dev/fault", { method: "DELETE" }).then(refreshStatus, () => note("The server does not answer.", true)));

// ---- inbox

const inboxNote = (text, bad) => {
  byId("inbox-note").textContent = text;
  byId("inbox-note").classList.toggle("bad", Boolean(bad));
};
async function refreshInbox() {
  const { catalogs, messages } = await (await fetch("/_dev/inbox")).json();
  byId("inbox-count").textContent = `${messages.length.toLocaleString()} messages`;
  const chosen = byId("inbox-catalog").value;
  const option = (value, text) => Object.assign(make("option", "", text), { value });
  byId("inbox-catalog").replaceChildren(option("", "none"), ...catalogs.map((each) => option(each.catalogId, each.catalogName)));
  byId("inbox-catalog").value = chosen;
}
byId("inbox-form").addEventListener("submit", async (event) => {
  event.preventDefault();
  const catalog = byId("inbox-catalog").value;
  const message = {
    heading: byId("inbox-heading").value,
    content: byId("inbox-content").value,
    lookup_type: byId("inbox-type").value,
    lookup_id: byId("inbox-id").value || "*",
    destination_id: Number(byId("inbox-destination").value),
    catalog_ids: catalog ? [catalog] : [],
  };
  try {
    const answer = await fetch("/_dev/inbox", { method: "POST", body: JSON.stringify(message) });
    const told = await answer.json();
    inboxNote(answer.ok ? `Added as ${told.item_id}` : (told.problems || [told.error]).join("; "), !answer.ok);
    if (answer.ok) byId("inbox-form").reset();
    await refreshInbox();
  } catch {
    inboxNote("The server does not answer.", true);
  }
});
refreshInbox().catch(() => {});

// ---- deliveries

// The address names the tab: "#deliveries".
function chooseTab() {
  const name = ["deliveries", "pushes"].find((each) => location.hash === "#" + each) || "requests";
  for (const tab of byId("tabs").children) {
    const on = tab.dataset.tab === name;
    tab.classList.toggle("on", on);
    tab.setAttribute("aria-selected", on);
    byId(tab.dataset.tab).hidden = !on;
  }
}
byId("tabs").addEventListener("click", (event) => {
  const chosen = event.target.closest("button");
  if (chosen) location.hash = chosen.dataset.tab;
});
addEventListener("hashchange", chooseTab);
chooseTab();

const fact = (text, kind) => make("span", "fact" + (kind ? " " + kind : ""), text);
const kindOfVerdict = (verdict) =>
  /: shown/.test(verdict) ? "shown" : /refused|nothing was offered: (?!no campaign)/.test(verdict) ? "wrong" : "off";

function offerOf(campaign) {
  const line = make("div", "offer");
  line.append(make("b", "", campaign.name), fact(campaign.template));
  if (campaign.limits) line.append(fact("limit: " + campaign.limits));
  if (campaign.left_out) line.append(fact(campaign.left_out, "no"));
  if (campaign.hand_written) {
    line.append(fact(campaign.layout_asked ? "layout asked for" : "layout not asked for", campaign.layout_asked ? "yes" : ""));
    line.append(fact("content " + campaign.content, campaign.content === "given" ? "yes" : campaign.content === "not asked for" ? "" : "no"));
  }
  for (const what of ["impression", "viewable", "click"]) {
    line.append(fact(campaign[what] ? `${what} × ${campaign[what]}` : "no " + what, campaign[what] ? "yes" : ""));
  }
  return line;
}

function deliveryRow(delivery) {
  const row = make("article", "delivery " + kindOfVerdict(delivery.verdict));
  const line = make("div", "line");
  line.append(make("span", "time mono", new Date(delivery.time).toTimeString().slice(0, 8)),
    make("span", "name", delivery.event || "(no name)"), make("span", "tag " + delivery.twin, delivery.twin), make("span", "dim", delivery.uid));
  if (delivery.traced) line.append(fact("the app: " + delivery.traced, /^shown/.test(delivery.traced) ? "yes" : ""));
  row.append(line, make("div", "verdict", delivery.verdict), ...delivery.campaigns.map(offerOf));
  return row;
}

const mostDeliveries = 100;
let shownDeliveries = "";
async function refreshDeliveries() {
  const text = await (await fetch("/_dev/deliveries")).text();
  if (text === shownDeliveries) return;
  shownDeliveries = text;
  const { deliveries, catch_all } = JSON.parse(text);
  byId("catch-all").checked = catch_all;
  byId("delivery-count").textContent = deliveries.length ? deliveries.length.toLocaleString() : "";
  byId("no-deliveries").hidden = deliveries.length > 0;
  byId("delivery-rows").replaceChildren(...deliveries.slice(0, mostDeliveries).map(deliveryRow));
}
// Once in a while at most, however fast requests come.
let deliveriesTimer = 0;
function deliveriesChanged(path) {
  if (deliveriesTimer || !/^(\/sandbox)?\/(interaction|track)\//.test(path)) return;
  deliveriesTimer = setTimeout(() => {
    deliveriesTimer = 0;
    refreshDeliveries().catch(() => {});
  }, 250);
}
// What apps say of a delivery comes later, and is no request of theirs that the stream would tell.
setInterval(() => {
  if (!byId("deliveries").hidden && !document.hidden) refreshDeliveries().catch(() => {});
}, 1500);
byId("catch-all").addEventListener("change", (event) =>
  fetch("/_dev/campaigns?catch_all=" + (event.target.checked ? 1 : 0), { method: "POST" }).catch(() => {}));
byId("clear-deliveries").addEventListener("click", () =>
  fetch("/_dev/deliveries", { method: "DELETE" }).then(refreshDeliveries).catch(() => {}));

async function showCampaigns() {
  const { campaigns } = await (await fetch("/_dev/campaigns")).json();
  byId("campaigns").replaceChildren(...campaigns.map((campaign) => {
    const card = make("div", "campaign");
    card.append(make("code", "", campaign.events[0] === "*" ? "any event" : campaign.events[0]), make("p", "", campaign.description));
    const link = make("a", "", "Look at it");
    link.href = "/_dev/preview?campaign=" + encodeURIComponent(campaign.name);
    link.target = "_blank";
    link.rel = "noopener";
    if (!["slide_in", "inline"].includes(campaign.template)) card.append(link);
    return card;
  }));
}
refreshDeliveries().catch(() => {});
showCampaigns().catch(() => {});

// ---- the stream

function tell(state, text) {
  byId("connection").className = "connection " + state;
  byId("connection").textContent = text;
}

// The server's word for: you read too slowly, and were not told everything.
const tooSlow = 4000;

function connect() {
  const known = new URLSearchParams({ since: lastNumber, ...(server === null ? {} : { server }) });
  const stream = new WebSocket(`ws://${location.host}/_dev/stream?${known}`);
  stream.addEventListener("open", () => tell("live", "Live"));
  stream.addEventListener("message", ({ data }) => {
    const news = JSON.parse(data);
    // Another server, or an emptied log: what is shown is no more.
    if (server !== null && (news.server !== server || news.clearings !== clearings)) forgetRows();
    ({ server, clearings } = news);
    if (news.skipped) {
      seconds[59] += news.skipped;
      tellOfGap();
    }
    for (const request of news.requests) {
      lastNumber = request.number;
      countAt(request.time);
      deliveriesChanged(request.path);
      if (request.path.endsWith("/api/app/identify")) pushesHeard();
      arrivals.push(request);
    }
    if (arrivals.length > mostRows) arrivals = arrivals.slice(-mostRows);
    if (news.status) showStatus(news.status);
    if (settled) later();
    else showArrivals();
    settled = true;
  });
  stream.addEventListener("close", ({ code }) => {
    if (code === tooSlow) {
      // A list with a hole in it would mislead, so the list is asked for anew.
      forgetRows();
      lastNumber = 0;
      tellOfGap();
    }
    tell("lost", "Connection lost · trying again");
    setTimeout(connect, 1000);
  });
}
function tellOfGap() {
  byId("notice").hidden = false;
  byId("notice").textContent = "Some requests came too fast to be shown; GET /_dev/requests has them.";
}
tell("", "Connecting…");
refresh();
connect();
