// Takes the screenshots of the documentation. NEB_WRITE_SCREENSHOTS=1 writes them to docs/browse.
import assert from "node:assert/strict";
import fs from "node:fs";
import path from "node:path";
import { after, before, test } from "node:test";
import { fileURLToPath } from "node:url";

import { makeDemoRepository } from "./demo.mjs";
import { compressedPng } from "./png.mjs";
import { openPage, serve, startBrowser } from "./support.mjs";

const folder = fileURLToPath(new URL("../../docs/browse", import.meta.url));
const MAX_BYTES = 100_000;
/** Long after the commits, so that their age is always the same. */
const now = new Date("2024-11-20T12:00:00Z");
let browser;
let server;
let ids;

before(async () => {
    const demo = makeDemoRepository();
    ({ ids } = demo);
    [browser, server] = await Promise.all([startBrowser(), serve(demo.folder)]);
});
after(() => Promise.all([browser?.close(), server?.end()]));

/** Each picture: the address of a view, what it waits for, and how it looks. */
const pictures = {
    "history-light": { hash: () => "#/log?branch=%2A", shows: "[role=option]:visible >> nth=13" },
    "history-dark": { hash: () => "#/log?branch=%2A", shows: "[role=option]:visible >> nth=13", scheme: "dark" },
    "history-narrow": { hash: () => "#/log?branch=%2A", shows: "[role=option]:visible >> nth=13", width: 360, height: 560 },
    commit: { hash: () => `#/commit/${ids.strict}`, shows: ".line mark >> nth=1", keys: ["s"] },
    blame: { hash: () => "#/file/HEAD/src%2Freport.c?line=15", shows: ".commit-cell.first .to-before", scheme: "dark" },
    changes: { hash: () => "#/changes", shows: ".line.added >> nth=2" },
};

for (const [name, { hash, shows, scheme = "light", width = 960, height = 480, keys = [] }] of Object.entries(pictures)) {
    test(`a screenshot of the page: ${name}`, { timeout: 180_000 }, async () => {
        const page = await browser.newPage();
        await page.setViewportSize({ width, height });
        await page.emulateMedia({ colorScheme: scheme, reducedMotion: "reduce" });
        await page.clock.setFixedTime(now);
        await openPage(page, server, hash());
        await page.locator(shows).first().waitFor();
        for (const key of keys) await page.keyboard.press(key);
        await page.locator(shows).first().waitFor();
        await page.waitForTimeout(200);
        const picture = compressedPng(await page.screenshot());
        await page.close();
        assert.ok(picture.length > 2000 && picture.length <= MAX_BYTES, `${picture.length} bytes`);
        if (process.env.NEB_WRITE_SCREENSHOTS) fs.writeFileSync(path.join(folder, `${name}.png`), picture);
        else assert.ok(fs.existsSync(path.join(folder, `${name}.png`)), "NEB_WRITE_SCREENSHOTS=1 writes the file");
    });
}
