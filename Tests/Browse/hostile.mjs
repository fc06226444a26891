// A repository whose names, messages and files try to be markup, or are not UTF-8.
import zlib from "node:zlib";

import { commit, git, makeRepository, write } from "./support.mjs";

export const attack = "<img src=x onerror='window.hacked=1'><script>window.hacked=1</script>";
export const markupName = "<img src=x onerror=window.hacked=1>.txt";
export const latinName = Buffer.from("b\xe4r.txt", "latin1");
export const oddNames = ["100% #1?&.txt", "new\nline.txt", "\u202egnp.txt", "quote'\".txt", "-dash.txt", " space .txt"];

/** A PNG of one colour. */
export function png(red, size = 8) {
    const chunk = (type, data) => {
        const body = Buffer.concat([Buffer.from(type), data]);
        const result = Buffer.alloc(body.length + 8);
        result.writeUInt32BE(data.length);
        body.copy(result, 4);
        result.writeUInt32BE(crc32(body), body.length + 4);
        return result;
    };
    const header = Buffer.from([0, 0, 0, size, 0, 0, 0, size, 8, 2, 0, 0, 0]);
    const row = Buffer.concat([Buffer.from([0]), Buffer.concat(Array(size).fill(Buffer.from([red, 80, 120])))]);
    return Buffer.concat([Buffer.from("\x89PNG\r\n\x1a\n", "latin1"), chunk("IHDR", header),
        chunk("IDAT", zlib.deflateSync(Buffer.concat(Array(size).fill(row)))), chunk("IEND", Buffer.alloc(0))]);
}

function crc32(bytes) {
    let crc = ~0;
    for (const byte of bytes) {
        crc ^= byte;
        for (let bit = 0; bit < 8; bit++) crc = (crc >>> 1) ^ (crc & 1 ? 0xedb88320 : 0);
    }
    return ~crc >>> 0;
}

/** Returns {folder, ids}: the commits by name. */
export function makeHostileRepository() {
    const folder = makeRepository();
    const ids = {};
    write(folder, "program.c", "int one() { return 1; }\nint two() { return 2; }\nint three() { return 3; }\n");
    write(folder, latinName, Buffer.from("gr\xfcn\nline two\n", "latin1"));
    write(folder, markupName, `${attack}\n`);
    for (const name of oddNames) write(folder, name, `content of a file\n${attack}\n`);
    write(folder, "src/deep/file.c", "// deep\n");
    write(folder, "picture.png", png(200));
    write(folder, "data.bin", Buffer.from([0, 1, 2, 3]));
    ids.first = commit(folder, `First commit\n\n${attack}\n`);
    write(folder, "program.c", "int one() { return 1; }\nint two() { return 22; }\nint three() { return 3; }\n");
    write(folder, latinName, Buffer.from("gr\xfcn\nline 2\n", "latin1"));
    write(folder, markupName, `${attack}\nmore\n`);
    write(folder, "picture.png", png(20));
    write(folder, "data.bin", Buffer.from([0, 1, 2, 4]));
    ids.second = commit(folder, `${attack} in a subject\n\nBody with ${attack}\nand a second line\n`, `--author=${"Eve [i]x[/i] \"quoted\""} <eve@example.org>`);
    git(folder, "mv", "program.c", "renamed.c");
    ids.rename = commit(folder, "Rename the program");
    git(folder, "checkout", "--quiet", "-b", "topic", ids.second);
    write(folder, "topic.txt", "topic\n");
    ids.topic = commit(folder, "Work on a topic");
    git(folder, "checkout", "--quiet", "main");
    git(folder, "merge", "--quiet", "--no-ff", "-m", "Merge the topic", "topic");
    ids.merge = git(folder, "rev-parse", "HEAD");
    git(folder, "tag", "v1.0", ids.first);
    git(folder, "update-ref", "refs/heads/<b>bold</b>", ids.second);
    return { folder, ids };
}
