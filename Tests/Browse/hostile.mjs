// A repository whose names, messages and files try to be markup, or are not UTF-8.
import { png } from "./png.mjs";
import { commit, git, makeRepository, write } from "./support.mjs";

export const attack = "<img src=x onerror='window.hacked=1'><script>window.hacked=1</script>";
export const markupName = "<img src=x onerror=window.hacked=1>.txt";
export const latinName = Buffer.from("b\xe4r.txt", "latin1");
export const oddNames = ["100% #1?&.txt", "new\nline.txt", "\u202egnp.txt", "quote'\".txt", "-dash.txt", " space .txt"];

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
