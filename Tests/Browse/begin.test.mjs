// Tests what the page shows when it begins, before it follows changes, and of repositories made for one test.
import assert from "node:assert/strict";
import fs from "node:fs";

import { commit, git, makeLongHistory, makeRepository, openPage, repositoryTests, write } from "./support.mjs";

const repositoryTest = repositoryTests();
const row = (page, text) => page.locator("[role=option]:visible", { hasText: text });
const group = (page, name) => page.getByRole("region", { name, exact: true });

/** Opens a view whose watch begins only when the returned function is called. */
async function openBeforeWatch(page, server, hash) {
    let begin;
    const begun = new Promise((resolve) => { begin = resolve; });
    // Requests of a worker that pages share could not be held back.
    await page.addInitScript(() => { delete globalThis.SharedWorker; });
    await page.route("**/messages*", async (route) => {
        if (route.request().postData().includes("sourceControl/watch")) await begun;
        await route.continue();
    });
    await openPage(page, server, hash);
    return begin;
}

for (const checkout of [["main"], ["--detach"]]) {
    repositoryTest(`a commit is shown that is made before the watch of the first page begins: ${checkout}`, async (page, folder, server) => {
        git(folder, "checkout", "--quiet", ...checkout);
        const begin = await openBeforeWatch(page, server, "#/log");
        await row(page, "Second").waitFor();
        commit(folder, "Third");
        begin();
        await row(page, "Third").waitFor();
    });
}

repositoryTest("without a change, a reader who has scrolled gets no notice", async (page, folder, server) => {
    const begin = await openBeforeWatch(page, server, "#/log");
    await row(page, "Commit 1000").waitFor();
    await page.keyboard.press("PageDown");
    await page.keyboard.press("PageDown");
    const isReferences = (request) => Boolean(request.postData()?.includes('"type":1008'));
    await Promise.all([page.waitForRequest(isReferences), begin()]);
    // What the page asked for in between is answered when another view is shown.
    await page.getByRole("link", { name: "Branches" }).click();
    await page.locator("[role=option]:visible", { hasText: "main" }).waitFor();
    await page.goBack();
    await row(page, "Commit").first().waitFor();
    assert.equal(await page.locator(".notice").count(), 0);
    commit(folder, "News");
    await page.locator(".notice", { hasText: "The history has changed" }).waitFor();
}, () => makeLongHistory(1000));

repositoryTest("a file is shown as it was written before the watch began", async (page, folder, server) => {
    const begin = await openBeforeWatch(page, server, "#/file//a.txt");
    const line = page.locator(".blame .line .code").first();
    await line.and(page.getByText("one", { exact: true })).waitFor();
    await page.locator(".commit-cell.first").first().waitFor();
    write(folder, "a.txt", "new\n");
    begin();
    await line.and(page.getByText("new", { exact: true })).waitFor();
    await page.locator(".uncommitted").waitFor();
});

repositoryTest("a file is drawn again only if it changes", async (page, folder, server) => {
    await openPage(page, server, "#/changes");
    await page.locator(".remark", { hasText: "Nothing to commit" }).waitFor();
    await page.evaluate(() => { location.hash = "#/file//a.txt"; });
    await page.locator(".commit-cell.first").first().waitFor();
    const line = await page.locator(".blame .line").first().elementHandle();
    write(folder, "other.txt", "other\n");
    await page.goBack();
    await group(page, "Untracked").waitFor();
    await page.goForward();
    await page.locator(".commit-cell.first").first().waitFor();
    assert.equal(await line.evaluate((node) => node.isConnected), true);
    write(folder, "a.txt", "new\n");
    await page.locator(".uncommitted").waitFor();
    assert.equal(await line.evaluate((node) => node.isConnected), false);
});

repositoryTest("a file of a branch follows the branch", async (page, folder, server) => {
    await openPage(page, server, "#/file/HEAD/a.txt");
    await page.locator(".commit-cell.first").nth(1).waitFor();
    write(folder, "a.txt", "one\n2\nthree\n");
    commit(folder, "Third");
    await page.locator(".commit-cell.first").nth(2).waitFor();
    git(folder, "commit", "--quiet", "--amend", "-m", "Rewritten");
    await page.locator(`.to-commit[title$="Rewritten"]`).waitFor();
    assert.equal(await page.locator(".blame .line").count(), 3);
    assert.equal(await page.locator(".commit-cell.first").count(), 3);
    write(folder, "a.txt", "\0");
    commit(folder, "Binary");
    await page.locator(".remark", { hasText: "A binary file" }).waitFor();
    git(folder, "reset", "--quiet", "--hard", "HEAD~1");
    await page.locator(".blame .line").nth(2).waitFor();
});

repositoryTest("a file that is unfolded again is shown as it is now", async (page, folder, server) => {
    await openPage(page, server, "#/changes");
    const file = page.getByRole("region", { name: "a.txt", exact: true });
    await file.locator(".diff", { hasText: "three" }).waitFor();
    await file.locator("button.file").click();
    await file.locator(".diff").waitFor({ state: "hidden" });
    write(folder, "a.txt", "four\n");
    while (await file.locator(".diff:visible", { hasText: "four" }).count() === 0) {
        if (await file.locator(".diff:visible").count() > 0) await file.locator("button.file").click();
        await file.locator("button.file").click();
        await file.locator(".diff:visible").waitFor();
    }
}, () => {
    const folder = makeRepository();
    write(folder, "a.txt", "one\n");
    commit(folder, "First");
    write(folder, "a.txt", "three\n");
    return folder;
});

const scrollTop = (page, value) => page.evaluate((to) => {
    const scroller = document.querySelector("#view article");
    if (to !== undefined) scroller.scrollTop = to;
    return scroller.scrollTop;
}, value);
const longText = (word) => `${word}\n`.repeat(900);
const longImage = (word) => `<svg xmlns="http://www.w3.org/2000/svg" width="8" height="8">\n${longText(`<!-- ${word} -->`)}</svg>\n`;

repositoryTest("the place of the reader stays when files change", async (page, folder, server) => {
    await openPage(page, server, "#/changes");
    await page.locator(".changed-file .diff").nth(1).waitFor();
    await scrollTop(page, 9000);
    write(folder, "other.txt", "other\n");
    await group(page, "Untracked").waitFor();
    await page.locator(".changed-file .diff").nth(1).waitFor();
    assert.equal(await scrollTop(page), 9000);
    for (const [name, content] of [["long.txt", longText], ["picture.svg", longImage]]) {
        await openPage(page, server, `#/file//${name}?line=700`);
        await page.locator(".line.chosen").waitFor();
        while (await scrollTop(page) < 9000) await page.waitForTimeout(20);
        await scrollTop(page, 13000);
        // A file that is written in place is empty for a moment.
        fs.renameSync(write(folder, `.git/${name}`, content("newer")), `${folder}/${name}`);
        await page.locator(".line.chosen .code", { hasText: "newer" }).waitFor();
        assert.equal(await scrollTop(page), 13000, name);
    }
}, () => {
    const folder = makeRepository();
    for (const word of ["first", "second"]) {
        write(folder, "a.txt", longText(word));
        write(folder, "long.txt", longText(word));
        write(folder, "picture.svg", longImage("only"));
        if (word === "first") commit(folder, word);
    }
    return folder;
});

repositoryTest("the commit of a long run of lines is named again after twenty lines", async (page, folder, server) => {
    await openPage(page, server, "#/file/HEAD/long.txt");
    const line = page.locator(".blame .line");
    await line.nth(40).locator(".to-commit").waitFor();
    assert.equal(await page.locator(".to-commit").count(), 3);
    assert.equal(await page.locator(".commit-cell.first").count(), 1);
    const ids = git(folder, "log", "--format=%H").split("\n");
    assert.equal(await line.nth(20).locator(".to-commit").getAttribute("href"), `#/commit/${ids[0]}?file=long.txt`);
    await line.nth(40).locator(".to-before").click();
    await page.waitForURL(new RegExp(`/file/${ids[1]}/long.txt\\?line=41$`));
}, () => {
    const folder = makeRepository();
    for (const text of ["line", "other"]) {
        write(folder, "long.txt", `${text}\n`.repeat(50));
        commit(folder, text);
    }
    return folder;
});

repositoryTest("a bare repository has no changes and no files of a working copy", async (page, folder, server) => {
    await openPage(page, server, "#/file/HEAD/a.txt");
    await page.locator(".commit-cell.first").first().waitFor();
    assert.deepEqual(await page.locator("#views a").allTextContents(), ["History", "Files", "Branches"]);
    assert.equal(await page.getByRole("link", { name: "Working copy" }).count(), 0);
    await page.keyboard.press("g");
    await page.keyboard.press("c");
    await page.keyboard.press("?");
    await page.locator("dialog", { hasText: "g b" }).waitFor();
    assert.equal(await page.locator("dialog", { hasText: "g c" }).count(), 0);
    await page.keyboard.press("Escape");
    await page.keyboard.press("g");
    await page.keyboard.press("h");
    await row(page, "First").waitFor();
    const next = git(folder, "commit-tree", "-p", "HEAD", "-m", "Second", "HEAD^{tree}");
    git(folder, "update-ref", "HEAD", next);
    await row(page, "Second").waitFor();
    assert.equal(await page.locator(".notice").count(), 0);
}, () => {
    const folder = makeRepository();
    write(folder, "a.txt", "text\n");
    commit(folder, "First");
    git(folder, "config", "core.bare", "true");
    return `${folder}/.git`;
});
