// The commits of a list in little memory: pages of bytes, and the lanes above each page.
import { place } from "./lanes.js";

const MAX_SUBJECT = 250;
const key = (name) => `NEBSourceControlOperation${name}Key`;
const [objectId, parentsKey, author, authorTime, offset, subject, references, isHead, changes, path, pathBytes] = [
    "ObjectID", "Parents", "Author", "AuthorTime", "AuthorTimeOffset", "Subject", "References", "IsHEAD", "Changes",
    "Path", "PathBytes"].map(key);

/** Returns what a row shows of a record of type 1001. */
export function rowOf(record) {
    return {
        id: record[objectId], parents: record[parentsKey] ?? [], author: record[author] ?? "",
        time: record[authorTime], offset: record[offset] ?? 0, subject: (record[subject] ?? "").slice(0, MAX_SUBJECT),
        references: record[references] ?? [], isHead: record[isHead] === true, path: pathOf(record[changes]),
    };
}

function pathOf(list) {
    return list?.length === 1 ? list[0][pathBytes] ?? list[0][path] : undefined;
}

/** Gives each row its lanes, beginning with those above the first row; returns the lanes below the last one. */
export function placeRows(rows, lanes) {
    for (const row of rows) {
        row.graph = place(lanes, row.id, row.parents);
        lanes = row.graph.lanes;
        delete row.graph.lanes;
    }
    return lanes;
}

/** Packs rows and unpacks them; one packer serves all pages of a list, whose authors repeat. */
export class RowPacker {
    #compression = compression();
    #authors = [];
    #indexes = new Map();

    /** Returns {count, ids, text, bytes}: the ids, the other fields, compressed if possible, and the number of bytes. */
    async pack(rows) {
        const size = rows[0].id.length / 2;
        const ids = new Uint8Array(rows.length * size);
        const fields = rows.map((row, index) => {
            writeHex(ids, index * size, row.id);
            return this.#fieldsOf(row, rows[index + 1]?.id);
        });
        const text = await transformed(new TextEncoder().encode(JSON.stringify(fields)), this.#compression?.pack);
        return { count: rows.length, ids, text, bytes: ids.length + text.length };
    }

    /** Returns the rows of a page, without their lanes. */
    async unpack(page) {
        const size = page.ids.length / page.count;
        const idAt = (index) => readHex(page.ids, index * size, size);
        const text = await transformed(page.text, this.#compression?.unpack);
        return JSON.parse(new TextDecoder().decode(text)).map(
            ([subjectText, authorIndex, time, zone, parents, refs = [], head = 0, file], index) => ({
                id: idAt(index), subject: subjectText, author: this.#authors[authorIndex], time, offset: zone,
                parents: parents === 0 ? [idAt(index + 1)] : parents,
                references: refs, isHead: head === 1, path: file,
            }));
    }

    #fieldsOf(row, nextId) {
        const parents = row.parents.length === 1 && row.parents[0] === nextId ? 0 : row.parents;
        const fields = [row.subject, this.#indexOf(row.author), row.time, row.offset, parents];
        if (row.references.length || row.isHead || row.path !== undefined) {
            fields.push(row.references, row.isHead ? 1 : 0);
            if (row.path !== undefined) fields.push(row.path);
        }
        return fields;
    }

    #indexOf(name) {
        let index = this.#indexes.get(name);
        if (index === undefined) {
            index = this.#authors.push(name) - 1;
            this.#indexes.set(name, index);
        }
        return index;
    }
}

/** Returns functions that make streams; null in browsers that cannot compress, whose rows take more memory. */
function compression() {
    const format = "deflate-raw";
    try {
        new CompressionStream(format);
    } catch {
        return null;
    }
    return { pack: () => new CompressionStream(format), unpack: () => new DecompressionStream(format) };
}

async function transformed(bytes, makeStream) {
    if (makeStream === undefined) return bytes;
    return new Uint8Array(await new Response(new Blob([bytes]).stream().pipeThrough(makeStream())).arrayBuffer());
}

function writeHex(bytes, start, text) {
    for (let index = 0; index < text.length; index += 2) {
        bytes[start + index / 2] = parseInt(text.slice(index, index + 2), 16);
    }
}

const hex = Array.from({ length: 256 }, (_, byte) => byte.toString(16).padStart(2, "0"));

function readHex(bytes, start, size) {
    let text = "";
    for (let index = start; index < start + size; index++) text += hex[bytes[index]];
    return text;
}

