// ---- pushes: writing one, and what was heard of those that went out

const pushNote = (text, bad) => {
  byId("push-note").textContent = text;
  byId("push-note").classList.toggle("bad", Boolean(bad));
};
const choice = (value, text) => Object.assign(make("option", "", text), { value });
const call = async (path, options) => {
  const answer = await fetch(path, options);
  const told = await answer.json();
  if (!answer.ok) throw new Error((told.problems || [told.error]).join("; "));
  return told;
};

let pushFiles = []; // {name, text}
async function showPushFiles() {
  pushFiles = (await call("/_dev/push")).files;
  byId("push-file").replaceChildren(...pushFiles.map(({ name }) => choice(name, name)));
  if (pushFiles.some(({ name }) => name === "stylized_basic")) byId("push-file").value = "stylized_basic";
  fillPush();
}
function fillPush() {
  const file = pushFiles.find(({ name }) => name === byId("push-file").value);
  byId("push-text").value = file ? file.text : "";
}
byId("push-file").addEventListener("change", fillPush);

/** The device that is chosen stays so, also when it is not there for a while. */
function chooseDevice(uid) {
  byId("push-device").value = uid;
  for (const card of byId("devices").children) card.classList.toggle("on", card.dataset.uid === uid);
}
byId("push-device").addEventListener("change", (event) => chooseDevice(event.target.value));

async function refreshDevices() {
  const devices = await call("/_dev/devices");
  const chosen = byId("push-device").value;
  byId("push-device").replaceChildren(choice("", "all devices"), ...devices.map((device) =>
    choice(device.zentavo_apppush_uid, `${device.zentavo_apppush_uid.slice(0, 8)} · portal ${device.portal_id}`)));
  byId("devices").replaceChildren(...(devices.length ? devices.map((device) => {
    const card = make("button", "campaign device");
    card.dataset.uid = device.zentavo_apppush_uid;
    card.append(make("code", "", device.zentavo_apppush_uid), make("p", "", device.reached_at),
      fact("portal " + device.portal_id), fact(device.encrypted ? "encrypted" : "plain", device.encrypted ? "yes" : ""));
    card.title = "Push to this device only. Device id: " + device.device_id;
    card.addEventListener("click", () => chooseDevice(card.dataset.uid));
    return card;
  }) : [make("p", "hint", "None yet: an app has to register for push.")]));
  chooseDevice(devices.some((device) => device.zentavo_apppush_uid === chosen) ? chosen : "");
}

async function refreshRegistrations() {
  const { distributor, registrations } = await call("/_dev/push/registrations");
  byId("distributor").textContent = distributor;
  const change = (token, method) => () =>
    call("/_dev/push/registrations?token=" + encodeURIComponent(token), { method }).then(refreshRegistrations)
      .catch((error) => pushNote(error.message, true));
  byId("registrations").replaceChildren(...(registrations.length ? registrations.map((each) => {
    const card = make("div", "campaign");
    const renew = make("button", "link", "New endpoint");
    const drop = make("button", "link", "Unregister");
    renew.addEventListener("click", change(each.token, "POST"));
    drop.addEventListener("click", change(each.token, "DELETE"));
    card.append(make("code", "", each.service), make("p", "", each.description), make("p", "mono", each.endpoint),
      fact("version " + each.version), " ", renew, " · ", drop);
    return card;
  }) : [make("p", "hint", "None.")]));
}

function arrivalOf(device) {
  const line = make("div", "offer");
  line.append(make("b", "mono", device.zentavo_apppush_uid.slice(0, 8) || device.endpoint || "–"),
    fact(device.result, device.result === "delivered" ? "yes" : "no"));
  if (device.bytes) line.append(fact(`${device.bytes.toLocaleString()} bytes${device.encrypted ? ", encrypted" : ""}`));
  return line;
}

function pushRow(push) {
  const arrived = push.devices.filter((device) => device.result === "delivered").length;
  const row = make("article", "delivery " + (arrived === push.devices.length && arrived ? "shown" : arrived ? "off" : "wrong"));
  const line = make("div", "line");
  line.append(make("span", "time mono", new Date(push.time).toTimeString().slice(0, 8)), make("span", "name", push.source));
  if (push.template) line.append(make("span", "tag", push.template));
  line.append(make("span", "dim mono", push.push_id));
  const heard = make("div", "offer");
  heard.append(fact(push.clicks ? `click × ${push.clicks}` : "no click", push.clicks ? "yes" : ""));
  for (const rating of push.ratings) heard.append(fact(`rated ${rating.selected ?? "?"} of ${rating.scale ?? "?"}`, "yes"));
  row.append(line, ...push.devices.map(arrivalOf));
  const left = push.device_count - push.devices.length;
  if (left > 0) row.append(make("div", "dim", `and ${left} more devices`));
  row.append(heard);
  return row;
}

const mostPushes = 100;
async function refreshPushes() {
  const { pushes } = await call("/_dev/pushes");
  byId("push-count").textContent = pushes.length ? pushes.length.toLocaleString() : "";
  byId("no-pushes").hidden = pushes.length > 0;
  byId("push-rows").replaceChildren(...pushes.slice(0, mostPushes).map(pushRow));
}

// Once in a while at most, however fast things happen; `number` is the server's, which changes with each of them.
let pushNumber = null;
let pushTimer = 0;
function pushesHeard(number) {
  if (pushTimer || (number !== undefined && number === pushNumber)) return;
  pushTimer = setTimeout(() => {
    pushTimer = 0;
    Promise.all([refreshPushes(), refreshDevices(), refreshRegistrations()]).catch(() => {});
  }, 250);
  if (number !== undefined) pushNumber = number;
}

byId("push-form").addEventListener("submit", async (event) => {
  event.preventDefault();
  const text = byId("push-text").value;
  const name = byId("push-file").value;
  const uid = byId("push-device").value;
  const untouched = pushFiles.some((file) => file.name === name && file.text === text);
  const order = { ...(untouched ? { file: name } : { text }), ...(uid ? { uid } : {}) };
  pushNote("On its way…");
  try {
    const push = await call("/_dev/push", { method: "POST", body: JSON.stringify(order) });
    const arrived = push.devices.filter((device) => device.result === "delivered").length;
    pushNote(`${arrived} of ${push.device_count} devices took it`, arrived === 0);
  } catch (error) {
    pushNote(error.message, true);
  }
  pushesHeard();
});
byId("clear-pushes").addEventListener("click", () => call("/_dev/pushes", { method: "DELETE" }).catch(() => {}));

showPushFiles().catch(() => {});
pushesHeard();
