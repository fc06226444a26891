// Finds a line in the commit before, and goes there.
import { lineBefore } from "./diff-lines.js";
import { element, show } from "./elements.js";
import { errorElement } from "./errors.js";
import { loadChanges } from "./file-list.js";
import { nameIn, record, request, Type } from "./records.js";
import { address, textOf } from "./route.js";

/** The address names a commit, a path in it, and a line of that file. */
export function openBefore(app, [id, path], values) {
    const title = "The line before";
    const node = element("div.page", {}, element("h1", {}, title), element("p.remark", {}, "Finding the line…"));
    findLine(app, id, path, Number(values.line) || 1).then((target) => app.replace(target),
        (error) => show(node, element("h1", {}, title), errorElement(error)));
    return { node, title };
}

async function findLine(app, id, path, line) {
    const { result } = await app.connection.perform(request(Type.history, { startingRevision: id },
        { LogOutputLimit: 1, LogOutputFilesChanged: true }));
    const commit = record(result)[0];
    const parent = commit.parents?.[0];
    if (!parent) throw new Error("The commit has no parent: the file began there.");
    const isIt = (file) => textOf(nameIn(file, "path")) === textOf(path);
    const file = (commit.changes ?? []).find(isIt);
    const oldPath = (file && nameIn(file, "originalPath")) ?? path;
    const changes = await loadChanges(app,
        request(Type.changes, { startingRevision: parent, endingRevision: id, files: [path, oldPath] }, { ContextLines: 0 }));
    return address("file", [parent, oldPath], { line: lineBefore(changes.find(isIt)?.hunks ?? [], line) });
}
