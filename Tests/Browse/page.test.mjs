// Tests every view of the page in Chromium, on a repository whose content tries to be markup.
import assert from "node:assert/strict";
import fs from "node:fs";
import path from "node:path";
import { after, before, test } from "node:test";

import { attack, latinName, makeHostileRepository, markupName, oddNames } from "./hostile.mjs";
import { axeSource, commit, git, limit, LONGEST_WAIT, makeLongHistory, makeRepository, openPage, screenshot, serve, startBrowser, write } from
    "./support.mjs";

let browser;
let hostile;
let server;

before(async () => {
    hostile = makeHostileRepository();
    [browser, server] = await Promise.all([startBrowser(), serve(hostile.folder)]);
});
after(() => Promise.all([browser?.close(), server?.end()]));

/** Runs a test with a new page, which must report no error. */
function pageTest(name, body) {
    test(name, limit, async () => {
        const page = await browser.newPage();
        page.setDefaultTimeout(LONGEST_WAIT);
        const problems = [];
        page.on("pageerror", (error) => problems.push(String(error.stack)));
        page.on("console", (message) => { if (/Content.Security|Refused/.test(message.text())) problems.push(message.text()); });
        try {
            await body(page);
            assert.equal(await page.evaluate(() => window.hacked), undefined, "a script of the repository ran");
            assert.deepEqual(problems, []);
        } finally {
            await page.close();
        }
    });
}


/** Opens a view of the hostile repository, or of another one. */
const open = (page, hash = "#/log", from = server) => openPage(page, from, hash);

const rows = (page) => page.locator("[role=option]:visible");
const segment = (name) => [...Buffer.from(name)].map((byte) => `%${byte.toString(16).padStart(2, "0")}`).join("");

pageTest("the history shows subjects, references, authors and dates as text", async (page) => {
    await open(page);
    await rows(page).nth(4).waitFor();
    const subjects = await page.locator("[role=option]:visible .subject bdi").allTextContents();
    assert.deepEqual(subjects, ["Merge the topic", "Work on a topic", "Rename the program", `${attack} in a subject`, "First commit"]);
    assert.match(await rows(page).nth(0).textContent(), /HEAD.*main.*Ann Example.*2023-11-1/);
    assert.deepEqual(await rows(page).nth(3).locator(".ref").allTextContents(), ["<b>bold</b>"]);
    const left = async (part) => (await rows(page).nth(0).locator(part).boundingBox()).x;
    assert.ok(await left(".ref >> nth=0") < await left(".ref >> nth=1") && await left(".ref >> nth=1") < await left(".subject bdi"),
        "references stand in one line with the subject");
    assert.equal(await page.locator("main img, main script").count(), 0);
    assert.equal(await page.locator("p.status").textContent(), "5 commits");
    assert.ok((await page.locator("canvas.graph").boundingBox()).width >= 24, "two lanes");
    await screenshot(page, "history");
});

pageTest("a commit shows message, people, parents, files and their changes", async (page) => {
    await open(page, `#/commit/${hostile.ids.second}`);
    await page.locator(".changed-file .line.added").first().waitFor();
    assert.equal(await page.locator("h1").textContent(), `${attack} in a subject`);
    assert.equal(await page.locator("pre.message").textContent(), `Body with ${attack}\nand a second line`);
    assert.match(await page.locator("dl.facts").textContent(), /Eve .*<eve@example.org> 2023-11-14 .* \+0000/);
    const section = page.getByRole("region", { name: "program.c" });
    assert.deepEqual(await section.locator("mark").allTextContents(), ["2", "22"]);
    assert.equal(await section.locator(".counts").textContent(), "+1 −1");
    const names = await page.locator(".changed-file .name").allTextContents();
    assert.ok(names.includes(markupName) && names.includes("b\ufffdr.txt"), names.join());
    assert.equal(await page.locator("main script").count(), 0);
    assert.match(await page.getByRole("region", { name: "data.bin" }).textContent(), /A binary file/);
    await screenshot(page, "commit");
});

pageTest("changes are shown side by side, and white space is ignored", async (page) => {
    await open(page, `#/commit/${hostile.ids.second}`);
    const section = page.getByRole("region", { name: "program.c" });
    await section.locator(".line.added").waitFor();
    await page.keyboard.press("s");
    await section.locator(".diff.split").waitFor();
    assert.match(await section.locator(".side").nth(0).locator(".line.removed").textContent(), /return 2;/);
    assert.match(await section.locator(".side").nth(1).locator(".line.added").textContent(), /return 22;/);
    await screenshot(page, "side-by-side");
    await page.keyboard.press("s");
    await page.keyboard.press("w");
    await page.getByRole("link", { name: "Show white space" }).waitFor();
    await section.locator(".line.added").waitFor();
});

pageTest("images are shown before and after a change", async (page) => {
    await open(page, `#/commit/${hostile.ids.second}?file=picture.png`);
    const images = page.getByRole("region", { name: "picture.png" }).locator("img");
    await images.nth(1).waitFor();
    await page.locator(".images figcaption", { hasText: /8 × 8, \d+ bytes/ }).nth(1).waitFor();
    assert.deepEqual(await images.evaluateAll((nodes) => nodes.map((node) => node.naturalWidth)), [8, 8]);
    assert.deepEqual(await images.evaluateAll((nodes) => nodes.map((node) => node.alt)),
        ["Before: picture.png", "After: picture.png"]);
});

pageTest("a merge is compared with each parent, and the first commit with nothing", async (page) => {
    await open(page, `#/commit/${hostile.ids.merge}`);
    await page.getByRole("region", { name: "topic.txt" }).locator(".line.added").waitFor();
    await page.getByRole("link", { name: "parent 2" }).click();
    await page.getByRole("region", { name: "renamed.c" }).waitFor();
    assert.equal(await page.getByRole("region", { name: "topic.txt" }).count(), 0);
    await open(page, `#/commit/${hostile.ids.first}`);
    await page.getByRole("region", { name: "src/deep/file.c" }).locator(".line.added").waitFor();
});

pageTest("files with hostile names open from their folder", async (page) => {
    for (const name of [...oddNames, markupName, latinName]) {
        await open(page, `#/file/HEAD/${segment(name)}`);
        await page.locator(".blame .line .to-commit").first().waitFor();
        assert.match(await page.locator(".blame .line .code").first().textContent(), /content of a file|^<img src=x|^gr\ufffdn/);
    }
    await open(page, "#/tree/HEAD");
    await rows(page).nth(10).waitFor();
    const names = await page.locator("[role=option]:visible .subject bdi").allTextContents();
    assert.equal(names[0], "src/");
    for (const name of [markupName, "b\ufffdr.txt", "new␊line.txt", "[U+202E]gnp.txt"]) assert.ok(names.includes(name), `${name} in ${names}`);
    await rows(page).filter({ hasText: "b\ufffdr.txt" }).click();
    await page.locator(".blame .line").nth(1).waitFor();
    await screenshot(page, "file-not-utf8");
});

pageTest("a folder is walked down and up", async (page) => {
    await open(page, "#/tree/HEAD");
    await rows(page).first().click();
    await rows(page).filter({ hasText: "deep/" }).click();
    await rows(page).filter({ hasText: "file.c" }).waitFor();
    await page.getByRole("link", { name: "src", exact: true }).click();
    await rows(page).filter({ hasText: "deep/" }).waitFor();
    await page.keyboard.press("u");
    await rows(page).filter({ hasText: "renamed.c" }).waitFor();
});

pageTest("blame leads to the commit of a line, and to the line before it across a rename", async (page) => {
    await open(page, "#/file/HEAD/renamed.c");
    const cells = page.locator(".commit-cell.first");
    await cells.nth(2).waitFor();
    await screenshot(page, "file");
    assert.equal(await page.locator(".blame .line").count(), 3);
    assert.equal(await cells.nth(0).locator(".to-before").count(), 0, "the first commit has no line before");
    await cells.nth(1).locator(".to-before").click();
    await page.waitForURL(/#\/file\/[0-9a-f]{40}\/program\.c\?line=2$/);
    await page.locator(".line.chosen").waitFor();
    assert.match(await page.locator(".line.chosen .code").textContent(), /return 2;/);
    await page.goBack();
    await cells.nth(1).locator(".to-commit").click();
    await page.locator("h1", { hasText: "in a subject" }).waitFor();
    assert.equal(await page.evaluate(() => document.activeElement.textContent.includes("program.c")), true);
});

pageTest("the history of a file follows renames", async (page) => {
    await open(page, "#/file/HEAD/renamed.c");
    await page.locator(".bar").getByRole("link", { name: "History", exact: true }).click();
    await rows(page).nth(2).waitFor();
    assert.deepEqual(await page.locator("[role=option]:visible .path").allTextContents(), ["renamed.c", "program.c", "program.c"]);
    await rows(page).nth(1).click();
    await page.getByRole("region", { name: "program.c" }).locator("mark").first().waitFor();
});

pageTest("the history is searched by message, author and content, and filtered by path, branch and date", async (page) => {
    const cases = [
        ["message=topic", ["Merge the topic", "Work on a topic"]],
        ["author=eve%40", [`${attack} in a subject`]],
        ["content=return%2022", [`${attack} in a subject`]],
        ["path=topic.txt", ["Work on a topic"]],
        ["branch=refs%2Fheads%2Ftopic", ["Work on a topic", `${attack} in a subject`, "First commit"]],
        ["since=2030-01-01", []], ["until=2023-11-15&message=First", ["First commit"]],
    ];
    for (const [query, expected] of cases) {
        await open(page, `#/log?${query}`);
        await page.locator("section.log[data-complete=true]").waitFor();
        assert.deepEqual(await page.locator("[role=option]:visible .subject bdi").allTextContents(), expected, query);
        assert.equal(await page.getByText("Change the search, the branch or the filter").count(), expected.length === 0 ? 1 : 0);
        assert.equal(await page.locator("p.status").textContent(), expected.length === 0 ? "No commits match."
            : expected.length === 1 ? "1 commit" : `${expected.length} commits`);
    }
});

pageTest("the form searches", async (page) => {
    await open(page);
    await rows(page).nth(4).waitFor();
    await page.keyboard.press("/");
    await page.keyboard.type("rename");
    await page.keyboard.press("Enter");
    await page.waitForURL(/message=rename/);
    await page.locator("p.status", { hasText: /^1 commit$/ }).waitFor();
    await page.getByRole("link", { name: "Clear" }).click();
    await page.locator("p.status", { hasText: "5 commits" }).waitFor();
    await page.getByLabel("Branch").selectOption({ label: "<b>bold</b>" });
    await page.locator("p.status", { hasText: "2 commits" }).waitFor();
});

pageTest("branches and tags lead to their history", async (page) => {
    await open(page, "#/branches");
    await rows(page).filter({ hasText: "v1.0" }).waitFor();
    assert.equal(await rows(page).count(), 4);
    await page.getByLabel("Filter by name").fill("bold");
    await rows(page).nth(1).waitFor({ state: "detached" });
    await rows(page).first().click();
    await page.locator("p.status", { hasText: "2 commits" }).waitFor();
});

pageTest("everything is reached with the keyboard", async (page) => {
    await open(page);
    await rows(page).nth(4).waitFor();
    for (const key of ["j", "j", "j"]) await page.keyboard.press(key);
    await page.locator("[role=option][aria-selected=true]", { hasText: "in a subject" }).waitFor();
    await page.keyboard.press("Enter");
    await page.locator(".changed-file .line.added").first().waitFor();
    await page.keyboard.press("n");
    await page.keyboard.press("n");
    const focused = page.locator("button.file:focus");
    assert.match(await focused.textContent(), /b\ufffdr\.txt|data\.bin/);
    await page.keyboard.press("o");
    assert.equal(await focused.getAttribute("aria-expanded"), "false");
    // Alt+Left belongs to the browser; without a window there is nothing that handles it.
    await page.goBack();
    await page.waitForURL(/#\/log$/);
    await page.locator("#views a[aria-current=page][data-view=log]").waitFor();
    await page.locator("section.log").waitFor();
    assert.match(await page.locator("[role=option][aria-selected=true]").textContent(), /in a subject/);
    for (const [key, view] of [["f", "tree/HEAD"], ["b", "branches"], ["c", "changes"], ["h", "log"]]) {
        await page.keyboard.press("g");
        await page.keyboard.press(key);
        await page.waitForURL(new RegExp(`#/${view}$`));
        await page.locator(`#views a[aria-current=page][data-view=${view.split("/")[0]}]`).waitFor();
    }
    await page.keyboard.press("?");
    await page.getByRole("dialog").waitFor();
    await page.keyboard.press("Escape");
    await page.getByRole("dialog").waitFor({ state: "detached" });
    await page.keyboard.press("End");
    await page.locator("[role=option][aria-selected=true]", { hasText: "First commit" }).waitFor();
});

pageTest("the badge of inspect mode leads to its explanation", async (page) => {
    await open(page);
    await page.getByRole("button", { name: "inspect" }).click();
    await page.getByRole("dialog").getByText("git runs no program that the repository names").waitFor();
});

pageTest("keys go to the view that was opened behind the list of keys", async (page) => {
    await open(page, "#/branches");
    await rows(page).first().waitFor();
    await page.keyboard.press("?");
    await page.getByRole("dialog").waitFor();
    await page.evaluate(() => { location.hash = "#/log"; });
    await rows(page).nth(4).waitFor();
    await page.keyboard.press("Escape");
    await page.getByRole("dialog").waitFor({ state: "detached" });
    await page.keyboard.press("End");
    await page.locator("[role=option][aria-selected=true]", { hasText: "First commit" }).waitFor();
});

pageTest("back and forward keep the position, and an address opens the same view elsewhere", async (page) => {
    await open(page, `#/commit/${hostile.ids.first}`);
    await page.locator(".line.added").first().waitFor();
    await page.locator("article.page").evaluate((node) => { node.scrollTop = 300; });
    await page.evaluate(() => { location.hash = "#/branches"; });
    await rows(page).first().waitFor();
    await page.goBack();
    await page.locator("article.page").waitFor();
    assert.equal(await page.locator("article.page").evaluate((node) => node.scrollTop), 300);
    await page.goForward();
    await rows(page).first().waitFor();
    await page.goBack();
    const other = await browser.newPage();
    await other.goto(page.url());
    await other.locator("h1", { hasText: "First commit" }).waitFor();
    await other.close();
});

pageTest("errors are a sentence, advice, and what git printed", async (page) => {
    await open(page, `#/commit/${"1".repeat(40)}`);
    await page.locator(".error .sentence").waitFor();
    assert.ok((await page.locator(".error .advice").textContent()).length > 10);
    await page.locator(".error summary").click();
    assert.match(await page.locator(".error pre").textContent(), /fatal: /);
    await open(page, "#/nonsense/<b>");
    await page.locator(".error", { hasText: "does not name a view" }).waitFor();
    await open(page, "#/log?branch=-x");
    await page.locator(".error .sentence").waitFor();
    await open(page, "#/file/HEAD/missing.c");
    await page.locator(".error .sentence").waitFor();
});

pageTest("an empty repository has an error instead of commits", async (page) => {
    const empty = await serve(makeRepository());
    await open(page, "#/log", empty);
    await page.locator(".error .sentence").waitFor();
    await open(page, "#/changes", empty);
    await page.locator(".remark", { hasText: "There are no commits yet" }).waitFor();
    await empty.end();
});

pageTest("long names leave room for what they name", async (page) => {
    const folder = makeRepository();
    const parts = Array.from({ length: 12 }, (_, index) => `${index}${"x".repeat(200)}`);
    write(folder, `${parts.join("/")}/file.txt`, "text\n");
    const id = commit(folder, `${"subject ".repeat(700)}\n\nBody`);
    const long = await serve(folder);
    await page.setViewportSize({ width: 360, height: 700 });
    await open(page, `#/tree/HEAD/${parts.join("%2F")}`, long);
    await rows(page).filter({ hasText: "file.txt" }).waitFor();
    assert.ok((await page.locator(".virtual-list").boundingBox()).height > 200);
    await open(page, `#/commit/${id}`, long);
    await page.locator("button.file").waitFor();
    assert.ok((await page.locator("dl.facts").boundingBox()).y < 500);
    await long.end();
});

pageTest("the advice for a submodule says where its content is", async (page) => {
    const folder = makeRepository();
    git(folder, "update-index", "--add", "--cacheinfo", `160000,${"1".repeat(40)},module`);
    git(folder, "commit", "--quiet", "-m", "Add a submodule");
    const withModule = await serve(folder);
    await open(page, "#/tree/HEAD", withModule);
    await rows(page).filter({ hasText: "module" }).click();
    await page.locator(".error .advice", { hasText: "A submodule has a repository of its own" }).waitFor();
    await withModule.end();
});

pageTest("a long history scrolls to its end and back, and large changes fold", async (page) => {
    const folder = makeLongHistory(8000);
    write(folder, "large.txt", Array.from({ length: 10_000 }, (_, line) => `line ${line}\n`).join(""));
    const id = commit(folder, "Add a large file");
    const long = await serve(folder);
    await open(page, "#/log", long);
    await rows(page).first().waitFor();
    assert.match(await page.locator("p.status").textContent(), /read/);
    await page.keyboard.press("End");
    await page.locator("[role=option][aria-selected=true]", { hasText: "Commit 1:" }).waitFor();
    assert.equal(await page.locator("p.status").textContent(), "8,001 commits");
    assert.equal(await page.locator("[role=option][aria-selected=true]").getAttribute("aria-posinset"), "8001");
    assert.ok(await page.locator("[role=option]").count() < 100, "only visible rows are elements");
    await page.locator("[role=listbox]").evaluate((node) => { node.scrollTop = node.scrollHeight / 2; });
    await rows(page).filter({ hasText: "Commit 4001:" }).waitFor();
    await page.keyboard.press("Home");
    await page.locator("[role=option][aria-selected=true]", { hasText: "Add a large file" }).waitFor();
    await open(page, `#/commit/${id}`, long);
    const button = page.locator("button.file");
    await button.waitFor();
    assert.equal(await button.getAttribute("aria-expanded"), "false");
    await button.click();
    await page.locator(".line.added").first().waitFor();
    assert.ok(await page.locator(".line").count() < 1000, "only lines near the view are elements");
    await page.locator("article.page").evaluate((node) => { node.scrollTop = node.scrollHeight; });
    await page.locator(".line.added", { hasText: "line 9999" }).waitFor();
    await long.end();
});

for (const [scheme, width] of [["light", 1280], ["dark", 1280], ["light", 360], ["dark", 360]]) {
    pageTest(`no view has accessibility findings: ${scheme}, ${width} pixels`, async (page) => {
        await page.setViewportSize({ width, height: 800 });
        await page.emulateMedia({ colorScheme: scheme });
        const views = { log: "#/log?branch=%2A", commit: `#/commit/${hostile.ids.second}`, file: "#/file/HEAD/renamed.c?line=2",
            tree: "#/tree/HEAD", changes: "#/changes", branches: "#/branches", error: `#/commit/${"1".repeat(40)}` };
        for (const [name, hash] of Object.entries(views)) {
            await open(page, hash);
            await page.waitForSelector("[role=option]:not([hidden]), .diff, .commit-cell.first, .group, .changes .remark:not(:empty), .error");
            await page.waitForTimeout(200);
            await page.evaluate(axeSource);
            const { violations } = await page.evaluate(() => window.axe.run(document));
            const found = violations.map(({ id, nodes }) => `${name}: ${id}: ${nodes[0].html} ${nodes[0].failureSummary}`);
            assert.deepEqual(found, []);
            assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= innerWidth), `${name} is too wide`);
            await screenshot(page, `${name}-${scheme}-${width}`);
        }
    });
}

test("the page asks no other server", limit, async () => {
    const page = await browser.newPage();
    const origins = new Set();
    page.on("request", (request) => origins.add(new URL(request.url()).origin));
    await open(page, `#/commit/${hostile.ids.second}`);
    await page.locator(".images img").nth(1).waitFor();
    origins.delete("null");
    assert.deepEqual([...origins].filter((origin) => origin !== new URL(server.url).origin), []);
    await page.close();
    assert.ok(fs.existsSync(path.join(hostile.folder, ".git")) && git(hostile.folder, "status", "--porcelain") === "");
});
