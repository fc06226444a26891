// Tests `nebsc serve` with vscode-jsonrpc, the JSON-RPC library of many editors.
//
//     NEBSC=<path of nebsc> NODE_PATH=<path of node_modules> node --test serve.test.js
"use strict";

const assert = require("node:assert/strict");
const { execFileSync, spawn } = require("node:child_process");
const { once } = require("node:events");
const fs = require("node:fs");
const os = require("node:os");
const path = require("node:path");
const { afterEach, test } = require("node:test");
const rpc = require("vscode-jsonrpc/node");

const nebsc = process.env.NEBSC;
const Type = { add: 0, status: 15, log: 18 };
const limit = { timeout: 120_000 };

// The tests do not depend on the user's configuration.
const home = fs.mkdtempSync(path.join(os.tmpdir(), "nebsc-client-"));
const environment = {
    ...process.env, HOME: home, GIT_CONFIG_GLOBAL: path.join(home, "config"), GIT_CONFIG_NOSYSTEM: "1",
    GIT_CEILING_DIRECTORIES: path.dirname(home),
    GIT_AUTHOR_NAME: "Ann Example", GIT_AUTHOR_EMAIL: "ann@example.org",
    GIT_COMMITTER_NAME: "Ann Example", GIT_COMMITTER_EMAIL: "ann@example.org",
    GIT_AUTHOR_DATE: "2026-03-04T05:06:07Z", GIT_COMMITTER_DATE: "2026-03-04T05:06:07Z",
};
const cleanUps = [() => fs.rmSync(home, { recursive: true, force: true })];
process.on("exit", () => cleanUps.forEach((cleanUp) => cleanUp()));

function makeFolder() {
    return fs.realpathSync(fs.mkdtempSync(path.join(home, "folder-")));
}

function git(folder, ...words) {
    return execFileSync("git", ["-C", folder, ...words], { env: environment, encoding: "utf8" });
}

/** A repository with a commit of the message, and a file that it does not know. */
function makeRepository(message = "Say hello") {
    const folder = makeFolder();
    git(folder, "init", "--quiet", "--initial-branch=main");
    fs.writeFileSync(path.join(folder, "hello.c"), "1\n");
    fs.writeFileSync(path.join(folder, ".message"), message);
    git(folder, "add", "hello.c");
    git(folder, "commit", "--quiet", "--file", ".message");
    fs.rmSync(path.join(folder, ".message"));
    fs.writeFileSync(path.join(folder, "new.c"), "2\n");
    return folder;
}

/**
 * A folder with a git that tells its process in a file "started" and then works for an hour, but in
 * a folder called "quick".
 */
function makeSlowGit() {
    const folder = makeFolder();
    fs.mkdirSync(path.join(folder, "quick"));
    fs.writeFileSync(
        path.join(folder, "git"),
        '#!/bin/sh\ncase "$1 $PWD" in --version*|*/quick) exit 0 ;; esac\n' +
            `echo $$ > '${folder}/started.part'\nmv '${folder}/started.part' '${folder}/started'\n` +
            "exec sleep 3600\n",
        { mode: 0o755 });
    return folder;
}

const pause = (milliseconds) => new Promise((done) => setTimeout(done, milliseconds));

/** The process of the slow git, once it works. */
async function workerOf(slowGit) {
    const file = path.join(slowGit, "started");
    for (const end = Date.now() + 60_000; !fs.existsSync(file); await pause(10)) {
        assert.ok(Date.now() < end, "the slow git was not started");
    }
    return Number(fs.readFileSync(file, "utf8"));
}

function isAlive(pid) {
    try {
        return !/\) [ZX] /.test(fs.readFileSync(`/proc/${pid}/stat`, "utf8"));
    } catch {
        return false;
    }
}

/** A running server and the library's connection to it. */
class Server {
    static running = [];

    constructor(pathOfGit) {
        const PATH = pathOfGit ? `${pathOfGit}:${process.env.PATH}` : process.env.PATH;
        this.process = spawn(nebsc, ["serve"], {
            env: { ...environment, PATH }, stdio: ["pipe", "pipe", "inherit"],
        });
        this.exited = once(this.process, "exit").then(([status]) => status);
        this.connection = rpc.createMessageConnection(
            new rpc.StreamMessageReader(this.process.stdout),
            new rpc.StreamMessageWriter(this.process.stdin));
        this.connection.onError(() => {});  // what a server that is gone does not take any more
        this.connection.listen();
        Server.running.push(this);
    }

    static async initialized(pathOfGit) {
        const server = new Server(pathOfGit);
        server.identity = await server.connection.sendRequest("initialize", {});
        return server;
    }

    perform(type, location, token, more = {}) {
        const request = { type, sourceTree: { location }, ...more };
        // An absent token would count as a parameter, and make an array of them.
        const parameters = token ? [request, token] : [request];
        return this.connection.sendRequest("sourceControl/perform", ...parameters);
    }
}

afterEach(() => {
    for (const server of Server.running.splice(0)) {
        server.connection.dispose();
        server.process.kill("SIGKILL");
    }
});

const rejectsWith = (code, promise) =>
    assert.rejects(promise, (error) => {
        assert.ok(error instanceof rpc.ResponseError, String(error));
        assert.equal(error.code, code);
        return true;
    });

// ---- a conversation ----------------------------------------------------------------------------

test("describes itself", limit, async () => {
    const { identity } = await Server.initialized();
    assert.deepEqual(Object.keys(identity), [
        "capabilities", "serverInfo", "contractVersion", "gitVersion", "requestTypes",
    ]);
    const version = execFileSync(nebsc, ["--version"], { encoding: "utf8" });
    assert.deepEqual(identity.capabilities, {
        partialResults: true, background: true, credentials: true, describe: true,
        record: true, trust: ["trusted", "inspect"],
        cursors: { max: 64 }, watch: { max: 64 },
    });
    assert.equal(identity.serverInfo.name, "nebsc");
    assert.equal(version.split("\n")[0], `nebsc ${identity.serverInfo.version}`);
    const contract = fs.readFileSync(
        path.join(__dirname, "../../Host/NEBFoundation/NEBSourceControlABIStamp.h"), "utf8");
    assert.match(contract, new RegExp(`ContractVersion = ${identity.contractVersion};`));
    assert.equal(identity.gitVersion, git(home, "--version").trim());
    const types = JSON.parse(execFileSync(nebsc, ["types", "--json"], { encoding: "utf8" }));
    assert.deepEqual(identity.requestTypes, types.map(({ type, name }) => ({ type, name })));
    assert.deepEqual(identity.requestTypes.slice(0, 40).map(({ type }) => type),
                     [...Array(40).keys()]);
    assert.deepEqual(identity.requestTypes[Type.log], { type: Type.log, name: "log" });
});

test("performs a status and a log", limit, async () => {
    const server = await Server.initialized();
    const folder = makeRepository("Grüße\n\n世界\n");
    const [status, log] = await Promise.all([
        server.perform(Type.status, folder), server.perform(Type.log, folder),
    ]);
    assert.deepEqual([status.error, log.error], [null, null]);
    assert.deepEqual(status.result.map((record) => record.NEBSourceControlOperationPathKey),
                     [path.join(folder, "new.c")]);
    assert.equal(log.result.length, 1);
    const [commit] = log.result;
    assert.equal(commit.NEBSourceControlOperationRevisionKey,
                 git(folder, "rev-parse", "--short=12", "HEAD").trim());
    assert.equal(commit.NEBSourceControlOperationAuthorKey, "Ann Example");
    assert.equal(commit.NEBSourceControlOperationDateKey, "2026-03-04T05:06:07Z");
    assert.equal(commit.NEBSourceControlOperationMessageKey.trim(), "Grüße\n\n世界");
});

test("returns the outcome of a request that fails", limit, async () => {
    const server = await Server.initialized();
    const outcome = await server.perform(Type.log, home);
    assert.equal(outcome.error.class, "not-a-repository");
    assert.match(outcome.error.text, /not a git repository/);
});

test("plans without running", limit, async () => {
    const server = await Server.initialized();
    const outcome = await server.connection.sendRequest(
        "sourceControl/plan", { type: Type.log, sourceTree: { location: home } });
    assert.equal(outcome.operation, "GitLogOperation");
    assert.equal(outcome.command.arguments[0], "log");
    assert.deepEqual(outcome.commands, []);
});

test("hands over a result of megabytes", limit, async () => {
    const server = await Server.initialized();
    const text = "Größe, 世界.\n".repeat(200_000).trim();
    const outcome = await server.perform(Type.log, makeRepository(text));
    const message = outcome.result[0].NEBSourceControlOperationMessageKey.trim();
    assert.ok(Buffer.byteLength(message) > 3_000_000);
    assert.ok(message === text, "the message is another");
});

// ---- what is refused ---------------------------------------------------------------------------

test("refuses what it does not understand and goes on", limit, async () => {
    const server = new Server();
    await rejectsWith(-32002, server.perform(Type.status, home));
    await server.connection.sendRequest("initialize", {});
    await rejectsWith(-32600, server.connection.sendRequest("initialize", {}));
    await rejectsWith(-32601, server.connection.sendRequest("sourceControl/nothing"));
    const unknownMember = server.perform(Type.status, home, undefined, { sourcetree: 1 });
    await assert.rejects(unknownMember, { code: -32602, message: /'sourcetree'/ });
    const option = server.perform(Type.log, home, undefined, { startingRevision: "--output=x" });
    await assert.rejects(option, { code: -32602, message: /--output=x/ });
    assert.equal((await server.perform(Type.status, makeRepository())).error, null);
});

// ---- side by side ------------------------------------------------------------------------------

test("answers each of many requests, in whatever order", limit, async () => {
    const server = await Server.initialized();
    const folders = Array.from({ length: 8 }, (_, number) => makeRepository(`Commit ${number}`));
    const outcomes = await Promise.all(
        folders.flatMap((folder) => [server.perform(Type.log, folder), server.perform(12, folder)]));
    folders.forEach((_, number) => {
        const [commit] = outcomes[2 * number].result;
        assert.equal(commit.NEBSourceControlOperationMessageKey.trim(), `Commit ${number}`);
        assert.equal(outcomes[2 * number + 1].name, "unsupported");
    });
});

test("lets a quick request overtake a slow one", limit, async () => {
    const slowGit = makeSlowGit();
    const server = await Server.initialized(slowGit);
    const source = new rpc.CancellationTokenSource();
    const order = [];
    const slow = server.perform(Type.status, slowGit, source.token).then(
        () => order.push("slow"), () => order.push("cancelled"));
    await workerOf(slowGit);
    await server.perform(Type.status, path.join(slowGit, "quick")).then(() => order.push("quick"));
    source.cancel();
    await slow;
    assert.deepEqual(order, ["quick", "cancelled"]);
});

test("cancels what runs and what waits", limit, async () => {
    const slowGit = makeSlowGit();
    const server = await Server.initialized(slowGit);
    const [running, waiting] = [new rpc.CancellationTokenSource(), new rpc.CancellationTokenSource()];
    const first = server.perform(Type.add, slowGit, running.token);
    const worker = await workerOf(slowGit);
    const second = server.perform(Type.add, slowGit, waiting.token);
    waiting.cancel();
    await rejectsWith(-32800, second);
    assert.ok(isAlive(worker));
    running.cancel();
    await assert.rejects(first, (error) => {
        assert.equal(error.code, -32800);
        assert.equal(error.data.error.class, "cancelled");
        return true;
    });
    assert.ok(!isAlive(worker));
});

test("reports the progress of a long operation", limit, async () => {
    const slowGit = makeSlowGit();
    const server = await Server.initialized(slowGit);
    const source = new rpc.CancellationTokenSource();
    const values = [];
    const reported = new Promise((done) => {
        server.connection.onProgress(new rpc.ProgressType(), "token", (value) => {
            values.push(value);
            if (value.kind === "report") done();
        });
    });
    const slow = server.perform(Type.status, slowGit, source.token, { workDoneToken: "token" });
    await reported;
    source.cancel();
    await rejectsWith(-32800, slow);
    assert.deepEqual(values[0], { kind: "begin", title: "status" });
    assert.deepEqual(values[1], { kind: "report", message: "1 s" });
    assert.deepEqual(values.at(-1), { kind: "end" });
});

test("sends the records of a log while it runs", limit, async () => {
    const repository = makeRepository();
    const server = await Server.initialized();
    const [commit] = (await server.perform(Type.log, repository)).result;
    const values = [];
    server.connection.onProgress(new rpc.ProgressType(), "records", (value) => values.push(value));
    const outcome = await server.perform(Type.log, repository, undefined, { partialResultToken: "records" });
    assert.deepEqual(values, [{ records: [commit] }]);
    assert.deepEqual(outcome.result, []);
    assert.equal(outcome.recordCount, 1);
});

test("returns a log in pages", limit, async () => {
    const repository = makeRepository();
    git(repository, "commit", "--quiet", "--allow-empty", "--message", "Second");
    const server = await Server.initialized();
    const { result } = await server.perform(Type.log, repository);
    const request = { type: Type.log, sourceTree: { location: repository } };
    const first = await server.connection.sendRequest("sourceControl/open", { request, pageSize: 1 });
    assert.deepEqual(first, { records: [result[0]], cursor: first.cursor });
    const { cursor } = first;
    const next = await server.connection.sendRequest("sourceControl/next", { cursor, pageSize: 2 });
    assert.deepEqual(next.records, [result[1]]);
    assert.equal(next.cursor, null);
    assert.equal(next.outcome.error, null);
    await rejectsWith(-32602, server.connection.sendRequest("sourceControl/next", { cursor }));
});

// ---- the end -----------------------------------------------------------------------------------

test("ends with 0 after shutdown and exit", limit, async () => {
    const server = await Server.initialized();
    const closed = new Promise((done) => server.connection.onClose(done));
    assert.equal(await server.connection.sendRequest("shutdown"), null);
    await rejectsWith(-32600, server.perform(Type.status, home));
    await server.connection.sendNotification("exit");
    assert.equal(await server.exited, 0);
    await closed;
});

test("ends with 1 after exit alone, and leaves nothing behind", limit, async () => {
    const slowGit = makeSlowGit();
    const server = await Server.initialized(slowGit);
    const slow = rejectsWith(-32800, server.perform(Type.status, slowGit));
    const worker = await workerOf(slowGit);
    await server.connection.sendNotification("exit");
    await slow;
    assert.equal(await server.exited, 1);
    assert.ok(!isAlive(worker));
});

test("ends with 1 when the connection closes, and leaves nothing behind", limit, async () => {
    const slowGit = makeSlowGit();
    const server = await Server.initialized(slowGit);
    server.perform(Type.status, slowGit).catch(() => {});
    const worker = await workerOf(slowGit);
    server.connection.end();
    server.process.stdin.end();
    assert.equal(await server.exited, 1);
    assert.ok(!isAlive(worker));
});
