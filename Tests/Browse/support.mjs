// Repositories, nebsc and Chromium for the tests of the page.
//
//     NEBSC=<path of nebsc> NODE_PATH=<path of node_modules> node --test page.test.mjs
import assert from "node:assert/strict";
import { execFileSync, spawn } from "node:child_process";
import { once } from "node:events";
import fs from "node:fs";
import { createRequire } from "node:module";
import os from "node:os";
import path from "node:path";
import { after, before, test } from "node:test";

const require = createRequire(import.meta.url);
const { chromium } = require("playwright-core");
export const axeSource = fs.readFileSync(require.resolve("axe-core/axe.min.js"), "utf8");

const nebsc = process.env.NEBSC;
const chromiumArguments = ["--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
    "--disable-component-update", "--disable-sync", ...(process.getuid() === 0 ? ["--no-sandbox"] : [])];

// The tests do not depend on the user's configuration.
export const home = fs.realpathSync(fs.mkdtempSync(path.join(os.tmpdir(), "nebsc-browse-")));
export const environment = {
    ...process.env, HOME: home, GIT_CONFIG_GLOBAL: path.join(home, "config"), GIT_CONFIG_NOSYSTEM: "1",
    GIT_CEILING_DIRECTORIES: path.dirname(home), GIT_AUTHOR_NAME: "Ann Example", GIT_AUTHOR_EMAIL: "ann@example.org",
    GIT_COMMITTER_NAME: "Ann Example", GIT_COMMITTER_EMAIL: "ann@example.org",
};
const children = [];
process.on("exit", () => {
    for (const child of children) child.kill("SIGKILL");
    fs.rmSync(home, { recursive: true, force: true, maxRetries: 3 });
});

export function makeFolder() {
    return fs.mkdtempSync(path.join(home, "folder-"));
}

let seconds = 1_700_000_000;

/** Lets the next call of git() be later. */
export function advance(moreSeconds) {
    seconds += moreSeconds;
}

/** Runs git in the folder; each call is a minute later than the one before. */
export function git(folder, ...args) {
    const date = `${seconds += 60} +0000`;
    return execFileSync("git", ["-C", folder, ...args], {
        env: { ...environment, GIT_AUTHOR_DATE: date, GIT_COMMITTER_DATE: date }, encoding: "utf8", maxBuffer: 1 << 26,
    }).trimEnd();
}

export function makeRepository() {
    const folder = makeFolder();
    git(folder, "init", "--quiet", "--initial-branch=main");
    return folder;
}

/** Writes a file, whose name may be bytes, and returns its path. */
export function write(folder, name, content) {
    const file = Buffer.concat([Buffer.from(`${folder}/`), Buffer.from(name)]);
    fs.mkdirSync(path.dirname(file.toString("latin1")), { recursive: true });
    fs.writeFileSync(file, content);
    return file;
}

/** Commits everything with a message, which git does not change; returns the id. */
export function commit(folder, message, ...args) {
    git(folder, "add", "--all");
    git(folder, "commit", "--quiet", "--allow-empty", "--cleanup=verbatim", "-m", message, ...args);
    return git(folder, "rev-parse", "HEAD");
}

/** Makes a history of the given number of commits, newest subject "Commit N", with a merge in every ten. */
export function makeLongHistory(count) {
    const folder = makeRepository();
    const input = ["blob\nmark :1\ndata 1\nx"];
    const add = (mark, subject, parents) => input.push(
        `commit refs/heads/main\nmark :${mark}\ncommitter Ann Example <ann@example.org> ${1_600_000_000 + mark * 60} +0000\n`
        + `data ${Buffer.byteLength(subject)}\n${subject}\n`
        + `${parents.map((parent, index) => `${index ? "merge" : "from"} :${parent}\n`).join("")}`
        + `${parents.length ? "" : "M 100644 :1 file.txt\n"}`);
    for (let number = 1; number <= count; number++) {
        const mark = number + 1;
        const parents = number === 1 ? [] : number % 10 === 0 ? [mark - 2, mark - 1] : [number % 10 === 9 ? mark - 3 : mark - 1];
        add(mark, `Commit ${number}: improve the handling of input that ends early`, parents.filter((parent) => parent > 1));
    }
    execFileSync("git", ["-C", folder, "fast-import", "--quiet"], { input: input.join("\n"), env: environment });
    git(folder, "reset", "--quiet", "--hard", "main");
    return folder;
}

/** Starts nebsc for the folder; returns {url, end, child}. */
export async function serve(folder, ...args) {
    const child = spawn(nebsc, ["browse", "--stay", "--no-open", ...args, folder],
        { env: environment, stdio: ["ignore", "pipe", "pipe"] });
    children.push(child);
    const url = await new Promise((resolve, reject) => {
        let text = "";
        const read = (data) => {
            text += data;
            const match = /http:\/\/\S+/.exec(text);
            if (match) resolve(match[0]);
        };
        child.stdout.on("data", read);
        child.stderr.on("data", read);
        child.on("exit", () => reject(new Error(`nebsc browse has ended: ${text}`)));
    });
    // A test that failed before it ended the server would keep node running.
    for (const handle of [child, child.stdout, child.stderr]) handle.unref();
    const end = async () => {
        if (child.exitCode !== null || child.signalCode !== null) return;
        child.ref();
        child.kill("SIGTERM");
        await once(child, "exit");
    };
    return { url, end, child };
}

/** Starts Chromium with an empty profile. */
export async function startBrowser(options = {}) {
    const profile = fs.mkdtempSync(path.join(home, "profile-"));
    return chromium.launchPersistentContext(profile,
        { executablePath: "/usr/bin/chromium", args: chromiumArguments, viewport: { width: 1280, height: 800 }, ...options });
}

/** Longer than a test takes on a busy machine. */
export const limit = { timeout: 180_000 };
/** Longer than a step of a test takes. */
export const LONGEST_WAIT = 30_000;

/** Makes a repository of the commits "First" and "Second", which change the file a.txt. */
export function makeSmallRepository() {
    const folder = makeRepository();
    write(folder, "a.txt", "one\ntwo\n");
    commit(folder, "First");
    write(folder, "a.txt", "one\n2\n");
    commit(folder, "Second");
    return folder;
}

/**
 * Returns a function that runs a test in a new page, with a folder of its own that nebsc serves: test(name, body,
 * makeFolder?), where `body` takes the page, the folder, and what serve() returns.
 */
export function repositoryTests() {
    let browser;
    before(async () => { browser = await startBrowser(); });
    after(() => browser?.close());
    return (name, body, makeFolder = makeSmallRepository) => test(name, limit, async () => {
        const folder = makeFolder();
        const server = await serve(folder);
        const page = await browser.newPage();
        page.setDefaultTimeout(LONGEST_WAIT);
        const problems = [];
        page.on("pageerror", (error) => problems.push(String(error.stack)));
        try {
            await body(page, folder, server);
            assert.deepEqual(problems, []);
        } finally {
            await page.close();
            await server.end();
        }
    });
}

/** Opens a view of a repository that serve() serves. The first page gets a cookie from the printed URL. */
export async function openPage(page, server, hash = "#/log") {
    const { origin } = new URL(server.url);
    if (!server.hasCookie) {
        await page.goto(server.url);
        await page.waitForURL(`${origin}/`);
        await page.locator("#views a").first().waitFor();
        server.hasCookie = true;
    }
    // Another address of the page that is shown already would not load it.
    await page.goto("about:blank");
    await page.goto(`${origin}/${hash}`);
    await page.locator("#views a").first().waitFor();
}

/** Saves a screenshot in the folder $SCREENSHOTS, if it is set. */
export async function screenshot(page, name) {
    if (process.env.SCREENSHOTS) await page.screenshot({ path: path.join(process.env.SCREENSHOTS, `${name}.png`) });
}
