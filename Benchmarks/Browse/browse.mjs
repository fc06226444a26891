// Measures the page of nebsc browse in Chromium; prints a table.
//
//     NEBSC=<path of nebsc> NODE_PATH=<path of node_modules> node browse.mjs [COMMITS [LONG]]
//
// COMMITS is the history that is opened (82,000), LONG the one that is read to its end (1,000,000).
import fs from "node:fs";

import { commit, makeLongHistory, makeRepository, openPage, serve, startBrowser, write } from "../../Tests/Browse/support.mjs";

const [commits, longCommits] = [Number(process.argv[2] ?? 82_000), Number(process.argv[3] ?? 1_000_000)];
const SCROLL_SECONDS = 10;
const SCROLL_PIXELS_PER_FRAME = 1300;

/** Runs in the page before its scripts: notes when the first records arrived and when rows were painted. */
function observe() {
    const times = (window.times = {});
    const onmessage = Object.getOwnPropertyDescriptor(MessagePort.prototype, "onmessage");
    Object.defineProperty(MessagePort.prototype, "onmessage", { ...onmessage, set(listener) {
        onmessage.set.call(this, (event) => {
            if (event.data.text?.includes('"records":[{')) times.received ??= performance.now();
            listener(event);
        });
    } });
    new MutationObserver((records, observer) => {
        if (!document.querySelector("[role=option]")) return;
        observer.disconnect();
        requestAnimationFrame(() => setTimeout(() => { times.painted = performance.now(); }));
    }).observe(document, { childList: true, subtree: true });
}

async function measureOpening(page, server) {
    await page.addInitScript(observe);
    await openPage(page, server);
    for (;;) {
        // waitForFunction() evaluates a string, which the Content-Security-Policy forbids.
        const time = await page.evaluate(() => window.times.painted - window.times.received);
        if (time !== null && !Number.isNaN(time)) return time;
        await page.waitForTimeout(50);
    }
}

/** Scrolls down for some seconds and returns the times between frames, sorted. */
function measureScrolling(page) {
    return page.evaluate(([seconds, pixels]) => new Promise((resolve) => {
        const list = document.querySelector("[role=listbox]");
        const frames = [];
        let last = performance.now();
        const end = last + seconds * 1000;
        const frame = (now) => {
            frames.push(now - last);
            last = now;
            list.scrollTop += pixels;
            if (now < end) requestAnimationFrame(frame);
            else resolve(frames.slice(1).sort((a, b) => a - b));
        };
        requestAnimationFrame(frame);
    }), [SCROLL_SECONDS, SCROLL_PIXELS_PER_FRAME]);
}

async function measureEnd(browser, page, server) {
    await openPage(page, server);
    await page.locator("[role=option]:visible").first().waitFor();
    const begin = Date.now();
    await page.keyboard.press("End");
    await page.waitForSelector("section.log[data-complete=true]", { timeout: 600_000 });
    const seconds = (Date.now() - begin) / 1000;
    const session = await browser.newCDPSession(page);
    await session.send("HeapProfiler.collectGarbage");
    return { seconds, megabytes: await privateMegabytes() };
}

/** The private memory of the renderer that has most. */
async function privateMegabytes() {
    const sizes = fs.readdirSync("/proc").filter((name) => /^\d+$/.test(name)).map((pid) => {
        try {
            if (!fs.readFileSync(`/proc/${pid}/cmdline`, "utf8").includes("--type=renderer")) return 0;
            const text = fs.readFileSync(`/proc/${pid}/smaps_rollup`, "utf8");
            return [...text.matchAll(/^Private_\w+:\s+(\d+) kB/gm)].reduce((sum, match) => sum + Number(match[1]), 0) / 1024;
        } catch {
            return 0;
        }
    });
    return Math.max(...sizes);
}

async function measureDiff(page, server, id) {
    await openPage(page, server, `#/commit/${id}`);
    await page.locator("button.file").waitFor();
    return page.evaluate(() => new Promise((resolve) => {
        const begin = performance.now();
        new MutationObserver((records, observer) => {
            if (!document.querySelector(".line.added")) return;
            observer.disconnect();
            requestAnimationFrame(() => setTimeout(() => resolve(performance.now() - begin)));
        }).observe(document, { childList: true, subtree: true });
        document.querySelector("button.file").click();
    }));
}

const browser = await startBrowser();
const small = makeRepository();
write(small, "large.txt", Array.from({ length: 10_000 }, (_, line) => `line ${line}\n`).join(""));
const id = commit(small, "Add a large file");
const servers = await Promise.all([serve(makeLongHistory(commits)), serve(small), serve(makeLongHistory(longCommits))]);
const [history, changes, long] = servers;
const ms = (value) => `${value.toFixed(1)} ms`;
const page = await browser.newPage();
const opening = [];
for (let round = 0; round < 5; round++) opening.push(await measureOpening(page, history));
const frames = await measureScrolling(page);
const rank = (share) => frames[Math.min(frames.length - 1, Math.floor(frames.length * share))];
const diffs = [];
for (let round = 0; round < 5; round++) diffs.push(await measureDiff(page, changes, id));
await page.close();
const last = await measureEnd(browser, await browser.newPage(), long);
const median = (values) => values.sort((a, b) => a - b)[Math.floor(values.length / 2)];
console.log(`| measured | result |
|---|--:|
| first commits painted after the first record arrived, ${commits.toLocaleString("en")} commits | ${ms(median(opening))} |
| time between frames while scrolling: median, 99 %, longest | ${[0.5, 0.99, 1].map((share) => ms(rank(share))).join(", ")} |
| frames over 33 ms | ${frames.filter((time) => time > 33.4).length} of ${frames.length} |
| changes of 10,000 lines, from the click until they are painted | ${ms(median(diffs))} |
| reading ${longCommits.toLocaleString("en")} commits to the end | ${last.seconds.toFixed(1)} s |
| private memory of the page then | ${last.megabytes.toFixed(0)} MB |`);
await browser.close();
await Promise.all(servers.map((server) => server.end()));
process.exit(0);
