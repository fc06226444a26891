#!/usr/bin/env node
// client.mjs [FOLDER] - prints the latest commits of the repository that contains FOLDER, through "nebsc serve".
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
const outcome = await call("sourceControl/perform", {
    type: 18,  // log
    sourceTree: { location: resolve(process.argv[2] ?? ".") },
    options: { NEBSourceControlRequestOptionLogOutputLimit: 20 },
});
const key = (name) => `NEBSourceControlOperation${name}Key`;
for (const commit of outcome.result ?? []) {
    console.log([commit[key("Revision")], commit[key("Date")], commit[key("Author")],
                 commit[key("Message")].split("\n")[0]].join("  "));
}
if (outcome.error) {
    console.error(`client.mjs: ${outcome.error.localizedDescription}`);
    process.exitCode = 1;
}
await call("shutdown");
send({ method: "exit" });
