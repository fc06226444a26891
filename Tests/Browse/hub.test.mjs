// Tests how pages share a session with nebsc, without a browser.
import assert from "node:assert/strict";
import { test } from "node:test";

import { Hub } from "../../Web/hub.js";

/** A server, a browser's locks, and a hub. */
function makeHub({ refuses } = {}) {
    const sources = [];
    const posted = [];
    const locks = new Map();
    class EventSource extends EventTarget {
        constructor() {
            super();
            sources.push(this);
        }

        close() {}
    }
    const fetch = async (url, { body }) => {
        posted.push({ url, ...JSON.parse(body) });
        return { ok: !refuses, json: async () => ({ error: refuses }) };
    };
    const hub = new Hub({ EventSource, fetch, navigator: { locks: { request: (name, granted) => locks.set(name, granted) } } });
    const tell = (type, data) => sources.at(-1).dispatchEvent(Object.assign(new Event(type), { data: JSON.stringify(data) }));
    return { hub, posted, locks, sources, tell, begin: (session) => tell("session", { session }),
        respond: (id, result) => tell("message", { jsonrpc: "2.0", id, result }) };
}

function addPage(hub) {
    const received = [];
    const port = { postMessage: (message) => received.push(message) };
    hub.add(port);
    return { received, post: (data) => port.onmessage({ data }) };
}

test("pages share one stream of events, and each gets the responses to its own requests", () => {
    const { hub, posted, sources, begin, respond } = makeHub();
    const [first, second] = [addPage(hub), addPage(hub)];
    begin("1");
    const third = addPage(hub);
    assert.equal(sources.length, 1);
    for (const page of [first, second, third]) assert.deepEqual(page.received.splice(0), [{ session: "1" }]);
    first.post({ session: "1", id: 7, method: "sourceControl/perform", params: {} });
    second.post({ session: "1", id: 7, method: "sourceControl/perform", params: {} });
    assert.notEqual(posted[0].id, posted[1].id);
    respond(posted[1].id, "for the second");
    assert.deepEqual(first.received, []);
    assert.equal(second.received[0].id, 7);
    assert.equal(JSON.parse(second.received[0].text).result, "for the second");
});

test("changes go to the page that watches, other notifications to all", () => {
    const { hub, posted, begin, respond, tell } = makeHub();
    const [first, second] = [addPage(hub), addPage(hub)];
    begin("1");
    first.post({ session: "1", id: 1, method: "sourceControl/watch", params: {} });
    respond(posted[0].id, { watch: "w" });
    for (const page of [first, second]) page.received.length = 0;
    tell("message", { jsonrpc: "2.0", method: "sourceControl/didChange", params: { watch: "w" } });
    tell("message", { jsonrpc: "2.0", method: "$/progress", params: {} });
    assert.deepEqual([first.received.length, second.received.length], [2, 1]);
});

test("what a page left open is closed when its lock becomes free", () => {
    const { hub, posted, locks, begin, respond } = makeHub();
    const [page, other] = [addPage(hub), addPage(hub)];
    begin("1");
    page.post({ lock: "page" });
    for (const [id, method] of [[1, "open"], [2, "open"], [3, "watch"], [4, "open"], [5, "perform"]]) {
        page.post({ session: "1", id, method: `sourceControl/${method}`, params: {} });
    }
    other.post({ session: "1", id: 1, method: "sourceControl/open", params: {} });
    const ids = posted.splice(0).map(({ id }) => id);
    ["a", "b"].forEach((cursor, index) => respond(ids[index], { cursor }));
    respond(ids[2], { watch: "w" });
    respond(ids[5], { cursor: "of the other" });
    page.post({ session: "1", id: 6, method: "sourceControl/close", params: { cursor: "a" } });
    locks.get("page")();
    respond(ids[3], { cursor: "late" });
    assert.deepEqual(posted.map(({ method, params }) => [method, params]), [
        ["sourceControl/close", { cursor: "a" }],
        ["$/cancelRequest", { id: ids[3] }], ["$/cancelRequest", { id: ids[4] }], ["$/cancelRequest", { id: posted[0].id }],
        ["sourceControl/close", { cursor: "b" }], ["sourceControl/unwatch", { watch: "w" }],
        ["sourceControl/close", { cursor: "late" }],
    ]);
});

test("a request is cancelled under its id in the session", () => {
    const { hub, posted, begin, respond } = makeHub();
    const [page, other] = [addPage(hub), addPage(hub)];
    begin("1");
    other.post({ session: "1", id: 1, method: "sourceControl/perform", params: {} });
    page.post({ session: "1", id: 1, method: "sourceControl/perform", params: {} });
    page.post({ cancel: 1 });
    assert.deepEqual(posted[2].params, { id: posted[1].id });
    const before = page.received.length;
    respond(posted[1].id, "too late");
    assert.equal(page.received.length, before);
});

test("a refusal reaches the page that asked", async () => {
    const { hub, begin } = makeHub({ refuses: "No." });
    const page = addPage(hub);
    begin("1");
    page.post({ session: "1", id: 3, method: "sourceControl/perform", params: {} });
    await new Promise(setImmediate);
    assert.deepEqual(page.received.at(-1), { id: 3, refusal: "No." });
});

test("a loss is reported once, the hub connects again, and messages for the old session are dropped", async () => {
    const { hub, posted, sources, begin, tell } = makeHub();
    const page = addPage(hub);
    begin("1");
    tell("error");
    const late = addPage(hub);
    assert.deepEqual(page.received, [{ session: "1" }, { session: null }]);
    assert.deepEqual(late.received, [{ session: null }]);
    while (sources.length < 2) await new Promise((resolve) => { setTimeout(resolve, 20); });
    tell("error");
    assert.equal(page.received.length, 2);
    while (sources.length < 3) await new Promise((resolve) => { setTimeout(resolve, 20); });
    begin("2");
    page.post({ session: "1", id: 1, method: "sourceControl/perform", params: {} });
    assert.deepEqual(posted, []);
    assert.deepEqual(page.received.at(-1), { session: "2" });
});
