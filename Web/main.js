// The frame of the page: which view an address shows, notices, and what changes meanwhile.
import { openBefore } from "./before-view.js";
import { openCommit } from "./commit-view.js";
import { Connection } from "./connection.js";
import { element, show, visible } from "./elements.js";
import { errorElement } from "./errors.js";
import { openFile } from "./file-view.js";
import { installKeys, showHelp } from "./keys.js";
import { openLog } from "./log-view.js";
import { openReferences } from "./references-view.js";
import { address, parse } from "./route.js";
import { openTree } from "./tree-view.js";
import { openWorkingCopy } from "./working-copy-view.js";

const KEPT_VIEWS = 6;
const everything = ["head", "references", "index", "workingTree"];

/**
 * Views by name: each function returns {node, title, scroller?, keys?, changed?, check?, close?, list?}. `changed(changes)`
 * is called after a change; `check()` instead if there may have been one since the view read what it shows.
 */
const openers = {
    log: openLog, commit: openCommit, file: openFile, tree: openTree, changes: openWorkingCopy,
    branches: openReferences, before: openBefore,
};
const tabs = [["log", "History", []], ["tree", "Files", ["HEAD"]], ["branches", "Branches", []], ["changes", "Changes", []]];

const app = { connection: new Connection(), repository: null, view: null, notice, replace, title: setTitle };
const views = new Map();
const main = document.getElementById("view");
const notices = new Map();

/** Shows a notice under a key, with an optional button; removes it if the text is null. */
function notice(key, text, label, action) {
    notices.get(key)?.remove();
    notices.delete(key);
    if (text === null) return;
    const button = label ? element("button", { type: "button", click: action }, label) : null;
    const node = element("div.notice", {}, element("span", {}, visible(text)), button);
    notices.set(key, node);
    document.getElementById("notices").append(node);
}

/** Goes to an address that replaces the current one in the history of the browser. */
function replace(hash) {
    location.replace(hash);
}

function setTitle(view, title) {
    view.title = title;
    if (app.view === view) document.title = `${visible(title)} – ${app.repository?.name ?? "nebsc"}`;
}

function showAddress() {
    const hash = location.hash.length > 1 ? location.hash : address("log");
    if (app.view) {
        app.view.scrollTop = app.view.scroller?.scrollTop;
        app.view.focused = document.activeElement;
    }
    const view = views.get(hash) ?? makeView(hash);
    views.delete(hash);
    views.set(hash, view);
    app.view = view;
    show(main, view.node);
    if (view.scroller && view.scrollTop !== undefined) view.scroller.scrollTop = view.scrollTop;
    if (view.focused?.isConnected && view.focused !== document.body) view.focused.focus({ preventScroll: true });
    else view.focus?.();
    if (document.activeElement === document.body) main.focus({ preventScroll: true });
    setTitle(view, view.title);
    markTab(hash);
    notice("history", null);
    view.shown?.();
    for (const [key, old] of views) {
        if (views.size <= KEPT_VIEWS) break;
        old.close?.();
        views.delete(key);
    }
}

function makeView(hash) {
    try {
        const { view, segments, values } = parse(hash);
        if (Object.hasOwn(openers, view)) return openers[view](app, segments, values);
        throw new Error("This address does not name a view.");
    } catch (error) {
        return { node: element("div.page", {}, element("h1", {}, "Not found"), errorElement(error)), title: "Not found" };
    }
}

function markTab(hash) {
    const { view } = parse(hash);
    const active = { file: "tree", commit: "log", before: "tree" }[view] ?? view;
    for (const link of document.querySelectorAll("#views a")) {
        if (link.dataset.view === active) link.setAttribute("aria-current", "page");
        else link.removeAttribute("aria-current");
    }
}

function showRepository() {
    const { name, location: folder, trust, isBare } = app.repository;
    if (isBare) document.querySelector("#views [data-view=changes]").remove();
    const node = document.getElementById("repository");
    show(node, element("bdi", {}, visible(name)));
    node.title = folder;
    if (trust === "inspect") {
        node.after(element("button.trust", { type: "button", click: () => showHelp(app), title: "No program that the repository names runs." },
            "inspect"));
    }
}

/** Follows changes until the connection is lost. Views may have been read before, from another state or repository. */
async function watch() {
    try {
        await app.connection.call("watch", { workingTree: !app.repository?.isBare });
        notice("watch", null);
    } catch (error) {
        if (error.lost) return;
        notice("watch", `The page does not follow changes: ${error.message}`, "Try again", watch);
    }
    for (const view of views.values()) view.check ? view.check() : view.changed?.(everything);
}

function follow() {
    const { connection } = app;
    connection.addEventListener("open", () => {
        notice("connection", null);
        watch();
    });
    connection.addEventListener("lost", () => {
        notice("connection", "The connection to nebsc was lost. The page tries to connect again; if nebsc has ended, start it again.");
    });
    connection.addEventListener("sourceControl/didChange", ({ detail }) => {
        for (const view of views.values()) view.changed?.(detail.changes);
    });
    connection.addEventListener("sourceControl/watchEnded", ({ detail }) => {
        notice("watch", `The page no longer follows changes: ${detail.message}`, "Try again", watch);
    });
}

async function start() {
    show(document.getElementById("views"), tabs.map(([view, label, segments]) =>
        element("a", { href: address(view, segments), "data-view": view }, label)));
    document.getElementById("skip").addEventListener("click", (event) => {
        event.preventDefault();
        main.focus();
    });
    installKeys(app);
    addEventListener("hashchange", showAddress);
    try {
        const response = await fetch("/repository");
        if (!response.ok) throw new Error((await response.json()).error);
        app.repository = await response.json();
        showRepository();
    } catch (error) {
        notice("repository", `The repository cannot be shown: ${error.message}`);
    }
    follow();
    app.connection.connect();
    showAddress();
}

start();
