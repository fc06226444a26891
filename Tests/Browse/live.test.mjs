// Tests the page while the repository changes, is rewritten or removed, and when the connection is lost.
import assert from "node:assert/strict";
import fs from "node:fs";
import http from "node:http";

import { png } from "./png.mjs";
import { commit, environment, git, LONGEST_WAIT, makeLongHistory, makeSmallRepository, openPage, repositoryTests, write } from
    "./support.mjs";

const liveTest = repositoryTests();
const open = openPage;
const row = (page, text) => page.locator("[role=option]:visible", { hasText: text });
const group = (page, name) => page.getByRole("region", { name, exact: true });

/** Waits for exactly these images, in this order; the view may be drawn again meanwhile. */
async function showsImages(place, titles) {
    const captions = place.locator("figcaption");
    for (const [index, title] of titles.entries()) {
        await captions.nth(index).and(place.locator("figcaption", { hasText: new RegExp(`^${title} 8 × 8`) })).waitFor();
    }
    assert.ok(await captions.count() <= titles.length);
}

liveTest("the history shows a new commit", async (page, folder, server) => {
    await open(page, server);
    await row(page, "Second").waitFor();
    write(folder, "a.txt", "three\n");
    commit(folder, "Third");
    await row(page, "Third").waitFor();
    assert.equal(await page.locator("p.status").textContent(), "3 commits");
});

liveTest("a reader who scrolled is asked first", async (page, folder, server) => {
    await open(page, server);
    await row(page, "Commit 1000").waitFor();
    await page.keyboard.press("PageDown");
    await page.keyboard.press("PageDown");
    commit(folder, "News");
    await page.locator(".notice", { hasText: "The history has changed" }).waitFor();
    assert.equal(await row(page, "News").count(), 0);
    await page.getByRole("button", { name: "Show it" }).click();
    await row(page, "News").waitFor();
}, () => makeLongHistory(1000));

liveTest("the working copy is shown as it is", async (page, folder, server) => {
    await open(page, server, "#/changes");
    await page.locator(".remark", { hasText: "Nothing to commit" }).waitFor();
    write(folder, "a.txt", "one\n2\nthree\n");
    await group(page, "Not staged").getByRole("button", { name: /a\.txt/ }).click();
    await group(page, "Not staged").locator(".line.added", { hasText: "three" }).waitFor();
    write(folder, "a.txt", "one\n2\nfour\n");
    await group(page, "Not staged").locator(".line.added", { hasText: "four" }).waitFor();
    write(folder, "new.txt", "new\n");
    await group(page, "Untracked").getByText("new.txt").waitFor();
    git(folder, "add", "a.txt");
    await group(page, "Staged").getByRole("button", { name: /a\.txt/ }).waitFor();
    assert.equal(await group(page, "Not staged").count(), 0);
    commit(folder, "Everything");
    await page.locator(".remark", { hasText: "Nothing to commit" }).waitFor();
});

liveTest("untracked files are shown with their lines, without following links", async (page, folder, server) => {
    const secret = `${environment.HOME}/secret.txt`;
    fs.writeFileSync(secret, "secret\n");
    write(folder, "new/text+ 1.txt", "one\n<b>two</b>");
    write(folder, "binary.bin", Buffer.from([1, 0, 2]));
    write(folder, "empty.txt", "");
    git(folder, "init", "--quiet", "nested");
    write(folder, "large.txt", "x\n".repeat(3 << 20));
    write(folder, "picture.png", png(200));
    fs.symlinkSync(secret, `${folder}/link.txt`);
    await open(page, server, "#/changes");
    const file = (name) => page.getByRole("region", { name, exact: true });
    await file("new/text+ 1.txt").locator(".line.added", { hasText: "<b>two</b> ⊘" }).waitFor();
    assert.equal(await file("new/text+ 1.txt").locator(".line.added").count(), 2);
    await file("binary.bin").getByText("A binary file.").waitFor();
    await file("empty.txt").getByText("The file is empty.").waitFor();
    await file("nested/").getByText("A folder with a repository of its own.").waitFor();
    await file("large.txt").getByText("it has 6291456 bytes").waitFor();
    await file("link.txt").getByText("symbolic link").waitFor();
    await file("picture.png").locator("figcaption", { hasText: "8 × 8" }).waitFor();
    assert.equal(await page.getByText("secret\n").count(), 0);
    write(folder, "new/text+ 1.txt", "three\n");
    await file("new/text+ 1.txt").locator(".line.added", { hasText: "three" }).waitFor();
});

liveTest("conflicts are shown with their kind, and the merge with them", async (page, folder, server) => {
    git(folder, "checkout", "--quiet", "-b", "topic", "HEAD~1");
    write(folder, "a.txt", "one\nzwei\n");
    commit(folder, "Topic");
    await open(page, server, "#/changes");
    await page.locator(".branch-line", { hasText: "Branch topic" }).waitFor();
    assert.throws(() => git(folder, "merge", "--quiet", "main"));
    await group(page, "Conflicts").getByRole("button", { name: /both modified/ }).waitFor();
    await page.getByText("A merge is under way").waitFor();
    git(folder, "merge", "--abort");
    await page.locator(".remark", { hasText: "Nothing to commit" }).waitFor();
});

liveTest("a conflict without lines says what each side did", async (page, folder, server) => {
    for (const name of ["ours.txt", "theirs.txt"]) write(folder, name, "base\n");
    write(folder, "data.bin", Buffer.from([0, 1]));
    write(folder, "picture.png", png(10));
    commit(folder, "Base");
    const change = (branch, number) => {
        git(folder, "checkout", "--quiet", "-b", branch, "main");
        write(folder, "data.bin", Buffer.from([0, number]));
        write(folder, "picture.png", png(number));
        write(folder, `${branch}.txt`, "changed\n");
        git(folder, "rm", "--quiet", `${branch === "ours" ? "theirs" : "ours"}.txt`);
        commit(folder, branch);
    };
    change("theirs", 200);
    change("ours", 100);
    assert.throws(() => git(folder, "merge", "--quiet", "theirs"));
    await open(page, server, "#/changes");
    await group(page, "Conflicts").getByText("Our side is HEAD").waitFor();
    const file = (name) => page.getByRole("region", { name, exact: true });
    await file("data.bin").getByText("Both sides changed the file. The working copy is as on our side.").waitFor();
    await file("ours.txt").getByText("Their side deleted the file; our side changed it.").waitFor();
    await file("theirs.txt").getByText("Our side deleted the file; their side changed it.").waitFor();
    await showsImages(file("picture.png"), ["Ancestor", "Ours", "Theirs"]);
});

liveTest("images and binary files of the working copy are shown as such", async (page, folder, server) => {
    write(folder, "picture.png", png(10));
    write(folder, "data.bin", Buffer.from([0, 1]));
    commit(folder, "Base");
    write(folder, "picture.png", png(200));
    await open(page, server, "#/changes");
    await showsImages(page, ["Staged", "Working copy"]);
    await open(page, server, "#/file//picture.png");
    await page.locator("figcaption", { hasText: "Working copy 8 × 8" }).waitFor();
    await page.locator(".file-view > .remark:empty").waitFor({ state: "attached" });
    assert.equal(await page.locator(".blame").count(), 0);
    await open(page, server, "#/file//data.bin");
    await page.getByText("A binary file.").waitFor();
    assert.equal(await page.locator(".blame").count(), 0);
});

liveTest("a browser that lacks what some browsers lack shows the same", async (page, folder, server) => {
    await page.addInitScript(() => {
        for (const name of ["SharedWorker", "CompressionStream", "DecompressionStream", "requestIdleCallback"]) delete window[name];
        Object.defineProperty(navigator, "locks", { value: undefined });
    });
    await open(page, server);
    assert.equal(await page.evaluate(() => window.SharedWorker ?? window.CompressionStream ?? navigator.locks), undefined);
    await page.keyboard.press("End");
    await page.locator("[role=option][aria-selected=true]", { hasText: "Commit 1:" }).waitFor();
    await page.keyboard.press("Home");
    await row(page, "Commit 3000").waitFor();
    commit(folder, "News");
    await row(page, "News").waitFor();
}, () => makeLongHistory(3000));

liveTest("a page whose browser refuses the shared worker has a connection of its own", async (page, folder, server) => {
    await page.addInitScript(() => {
        window.SharedWorker = class extends EventTarget {
            port = new MessageChannel().port1;

            constructor() {
                super();
                setTimeout(() => this.dispatchEvent(new Event("error")));
            }
        };
    });
    await open(page, server);
    await row(page, "Second").waitFor();
    assert.equal(await page.locator(".notice").count(), 0);
    commit(folder, "Third");
    await row(page, "Third").waitFor();
});

liveTest("a commit that was rewritten stays readable until git removes it, then the page says so", async (page, folder, server) => {
    const id = git(folder, "rev-parse", "HEAD");
    await open(page, server, `#/commit/${id}`);
    await page.locator("h1", { hasText: "Second" }).waitFor();
    git(folder, "commit", "--quiet", "--amend", "-m", "Rewritten");
    git(folder, "reflog", "expire", "--expire=now", "--all");
    git(folder, "gc", "--quiet", "--prune=now");
    await page.evaluate(() => { location.hash = "#/log"; });
    await row(page, "Rewritten").waitFor();
    assert.equal(await row(page, "Second").count(), 0);
    const other = await page.context().newPage();
    await open(other, server, `#/commit/${id}`);
    await other.locator(".error .sentence").waitFor();
    await other.getByRole("link", { name: "Go to the history" }).click();
    await row(other, "Rewritten").waitFor();
    await other.close();
});

liveTest("a repository that was removed gives an error and a notice", async (page, folder, server) => {
    await open(page, server, "#/changes");
    await page.locator(".remark", { hasText: "Nothing to commit" }).waitFor();
    fs.rmSync(folder, { recursive: true, force: true });
    await page.locator(".notice", { hasText: "no longer follows changes" }).waitFor();
    await page.evaluate(() => { location.hash = "#/branches"; });
    await page.locator(".error .sentence").waitFor();
});

liveTest("a repository that was replaced is shown when the reader tries again", async (page, folder, server) => {
    await open(page, server);
    await row(page, "Second").waitFor();
    fs.renameSync(folder, `${folder}-moved`);
    await page.locator(".notice", { hasText: "no longer follows changes" }).waitFor();
    await page.getByRole("button", { name: "Try again" }).click();
    await page.locator(".notice", { hasText: "does not follow changes" }).waitFor();
    fs.mkdirSync(folder);
    git(folder, "init", "--quiet", "--initial-branch=main");
    commit(folder, "Replaced");
    await page.getByRole("button", { name: "Try again" }).click();
    await row(page, "Replaced").waitFor();
    await page.locator(".notice").waitFor({ state: "detached" });
});

liveTest("two pages show the same repository, and one of them closes", async (page, folder, server) => {
    const other = await page.context().newPage();
    await open(page, server);
    await open(other, server);
    await row(page, "Second").waitFor();
    await row(other, "Second").waitFor();
    await page.bringToFront();
    commit(folder, "Third");
    await row(page, "Third").waitFor();
    await other.bringToFront();
    await row(other, "Third").waitFor();
    await other.close();
    await page.bringToFront();
    commit(folder, "Fourth");
    await row(page, "Fourth").waitFor();
});

/** The number of watches that nebsc holds. */
function watchCount({ child }) {
    const folder = `/proc/${child.pid}/fd`;
    return fs.readdirSync(folder).filter((name) => {
        try {
            return fs.readlinkSync(`${folder}/${name}`).includes("inotify");
        } catch {
            return false;
        }
    }).length;
}

liveTest("eight pages of one browser share a connection, and closing some does not stop the others", async (page, folder, server) => {
    await open(page, server);
    await row(page, "Second").waitFor();
    // The history may be shown before the watch has begun.
    while (watchCount(server) === 0) await page.waitForTimeout(20);
    const forOne = watchCount(server);
    const pages = [page];
    while (pages.length < 8) {
        const other = await page.context().newPage();
        other.setDefaultTimeout(LONGEST_WAIT);
        await open(other, server);
        await row(other, "Second").waitFor();
        pages.push(other);
    }
    const followed = async (some, subject) => {
        commit(folder, subject);
        for (const one of some) {
            await one.bringToFront();
            await row(one, subject).waitFor();
        }
    };
    await followed(pages, "For all");
    assert.ok(watchCount(server) > forOne);
    for (const one of pages.splice(0, 7)) await one.close();
    await followed(pages, "For the last");
    // Until the watches of the closed pages have ended. While a watch begins, there may be one more.
    while (watchCount(server) > forOne) await pages[0].waitForTimeout(20);
    assert.ok(watchCount(server) > 0);
    await pages[0].close();
});

/** A proxy whose connections the test can end; nebsc sees the requests as its own. */
async function makeProxy(server) {
    const target = new URL(server.url);
    const sockets = new Set();
    const paths = [];
    const proxy = http.createServer((request, response) => {
        paths.push(request.url.replace(/\?.*/, ""));
        const headers = { ...request.headers, host: target.host };
        if (headers.origin) headers.origin = target.origin;
        if (headers.referer) headers.referer = target.href;
        const onward = http.request({ host: target.hostname, port: target.port, path: request.url, method: request.method, headers },
            (incoming) => { response.writeHead(incoming.statusCode, incoming.headers); incoming.pipe(response); });
        onward.on("error", () => response.destroy());
        response.on("close", () => onward.destroy());
        request.pipe(onward);
    });
    proxy.on("connection", (socket) => { sockets.add(socket); socket.on("close", () => sockets.delete(socket)); });
    await new Promise((resolve) => { proxy.listen(0, "127.0.0.1", resolve); });
    const url = `http://127.0.0.1:${proxy.address().port}${target.pathname}${target.search}`;
    const cut = () => {
        paths.length = 0;
        sockets.forEach((socket) => socket.destroy());
    };
    /** Waits until the page has sent a message in a session that began after the cut. */
    const reconnected = async () => {
        const latest = Date.now() + LONGEST_WAIT;
        while (!(paths.includes("/events") && paths.includes("/messages", paths.indexOf("/events")))) {
            assert.ok(Date.now() < latest, `only ${paths.join()} after the cut`);
            await new Promise((resolve) => { setTimeout(resolve, 20); });
        }
    };
    return { url, cut, reconnected, close: () => { cut(); proxy.close(); } };
}

liveTest("after a lost connection the views go on", async (page, folder, server) => {
    const proxy = await makeProxy(server);
    await open(page, proxy);
    await row(page, "Commit 8000").waitFor();
    proxy.cut();
    await proxy.reconnected();
    await page.keyboard.press("End");
    await page.locator("[role=option][aria-selected=true]", { hasText: "Commit 1:" }).waitFor();
    assert.equal(await page.locator("p.status").textContent(), "8,000 commits");
    assert.equal(await page.locator(".notice").count(), 0);
    await page.keyboard.press("Home");
    commit(folder, "After the loss");
    await row(page, "After the loss").waitFor();
    proxy.close();
}, () => makeLongHistory(8000));

liveTest("the page says that nebsc has ended", async (page, folder, server) => {
    await open(page, server);
    await row(page, "Second").waitFor();
    await server.end();
    await page.locator(".notice", { hasText: "The connection to nebsc was lost" }).waitFor();
});

liveTest("the page runs no program that the repository names", async (page, folder, server) => {
    await open(page, server, "#/changes");
    await page.locator(".remark", { hasText: "Nothing to commit" }).waitFor();
    assert.equal(fs.existsSync(`${environment.HOME}/ran`), false);
}, () => {
    const folder = makeSmallRepository();
    git(folder, "config", "core.fsmonitor", `touch ${environment.HOME}/ran; false`);
    return folder;
});
