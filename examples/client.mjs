#!/usr/bin/env node
// client.mjs [FOLDER [SIZE]] - prints the log of the repository that contains FOLDER, through "nebsc serve", in pages
// of SIZE commits (50).
import { spawn } from "node:child_process";
import { resolve } from "node:path";

const server = spawn("nebsc", ["serve"], { stdio: ["pipe", "pipe", "inherit"] });
const pending = new Map();
let received = Buffer.alloc(0);
let lastId = 0;

server.on("error", (error) => {
    console.error(`client.mjs: ${error.message}`);
    process.exit(1);
});

function send(message) {
    const content = JSON.stringify({ jsonrpc: "2.0", ...message });
    server.stdin.write(`Content-Length: ${Buffer.byteLength(content)}\r\n\r\n${content}`);
}

function call(method, params) {
    send({ id: ++lastId, method, params });
    return new Promise((resolve, reject) => pending.set(lastId, { resolve, reject }));
}

server.stdout.on("data", (bytes) => {
    received = Buffer.concat([received, bytes]);
    for (let end; (end = received.indexOf("\r\n\r\n")) >= 0; ) {
        const length = Number(/content-length: *(\d+)/i.exec(received.toString("latin1", 0, end))[1]);
        if (received.length < end + 4 + length) return;
        const { id, result, error } = JSON.parse(received.subarray(end + 4, end + 4 + length));
        received = received.subarray(end + 4 + length);
        if (error) pending.get(id)?.reject(new Error(error.message));
        else pending.get(id)?.resolve(result);
    }
});

await call("initialize", {});
const key = (name) => `NEBSourceControlOperation${name}Key`;
let page = await call("sourceControl/open", {
    request: {
        type: 18,  // log
        sourceTree: { location: resolve(process.argv[2] ?? ".") },
    },
    pageSize: Number(process.argv[3] ?? 50),
});
for (;;) {
    for (const commit of page.records) {
        console.log([commit[key("Revision")], commit[key("Date")], commit[key("Author")],
                     commit[key("Message")].split("\n")[0]].join("  "));
    }
    if (!page.cursor) break;
    page = await call("sourceControl/next", { cursor: page.cursor });
}
if (page.outcome.error) {
    console.error(`client.mjs: ${page.outcome.error.localizedDescription}`);
    process.exitCode = 1;
}
await call("shutdown");
send({ method: "exit" });
