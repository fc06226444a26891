// A small project whose history is good to look at, always the same.
import fs from "node:fs";
import path from "node:path";

import { png } from "./png.mjs";
import { commit, git, makeFolder, advance, write } from "./support.mjs";

const ben = "--author=Ben Example <ben@example.org>";

const reader = `#include "reader.h"

/* Reads one line of a weather file: a station, and its temperature. */
int read_line(FILE *file, struct reading *reading) {
    char line[80];
    if (fgets(line, sizeof line, file) == NULL) {
        return 0;
    }
    return sscanf(line, "%15s %lf", reading->station, &reading->celsius) == 2;
}
`;
const report = `#include <stdio.h>

#include "reader.h"

/* Prints the average temperature of all stations. */
void print_average(FILE *file) {
    struct reading reading;
    double sum = 0;
    int count = 0;
    while (read_line(file, &reading)) {
        sum += reading.celsius;
        count++;
    }
    printf("%d stations, %.1f degrees\\n", count, sum / count);
}
`;

/** Makes the repository "weather" with changes in its working copy; returns {folder, ids}: commits by name. */
export function makeDemoRepository() {
    const folder = path.join(makeFolder(), "weather");
    fs.mkdirSync(folder);
    git(folder, "init", "--quiet", "--initial-branch=main");
    const ids = {};
    const step = (message, files, ...args) => {
        for (const [name, content] of Object.entries(files)) write(folder, name, content);
        advance(31 * 3600);
        return commit(folder, message, ...args);
    };
    const merge = (branch) => git(folder, "merge", "--quiet", "--no-ff", "-m", `Merge branch '${branch}'`, branch);
    step("Start with a plan", { "README.md": "# weather\n\nReports temperatures.\n", "LICENSE": "MIT\n" });
    step("Read lines of weather files", { "src/reader.c": reader, "src/reader.h": "/* readings */\n" });
    step("Print the average temperature", { "src/report.c": report }, ben);
    git(folder, "tag", "v1.0");
    git(folder, "checkout", "--quiet", "-b", "fahrenheit");
    const units = report.replace("%.1f degrees", "%.1f F").replace("sum / count", "sum / count * 9 / 5 + 32");
    step("Convert to Fahrenheit", { "src/report.c": units }, ben);
    step("Choose the unit with an option", { "src/options.c": "/* --unit=F */\n", "docs/options.md": "# Options\n" }, ben);
    git(folder, "checkout", "--quiet", "main");
    const longer = reader.replace("char line[80];", "char line[256];");
    step("Accept longer lines", { "src/reader.c": longer });
    merge("fahrenheit");
    git(folder, "checkout", "--quiet", "-b", "icons", "HEAD~1");
    step("Draw an icon for each station", { "icons/sun.png": png(230, 64), "icons/rain.png": png(60, 64) });
    git(folder, "checkout", "--quiet", "main");
    const strict = longer.replace("    return sscanf", "    /* A line without a number is no reading. */\n    return sscanf")
        .replace("char line[256];\n", "char line[LONGEST_LINE];\n").replace("\n\n/*", "\n\nenum { LONGEST_LINE = 256 };\n\n/*");
    ids.strict = step("Name the length of a line\n\nThe number was written twice, in the reader and in its description. A name says\n"
        + "what it means, and the compiler checks it.\n", { "src/reader.c": strict,
        "README.md": "# weather\n\nReports temperatures of all stations in a file.\n" });
    merge("icons");
    step("Describe the format of a file", { "docs/format.md": "# Format\n\nOne line per station.\n" }, ben);
    const checked = units.replace("    printf(", "    if (count == 0) {\n        printf(\"no stations\\n\");\n        return;\n    }\n    printf(");
    ids.empty = step("Report a file without stations\n\nThe average of nothing was printed as \"-nan\".\n", { "src/report.c": checked });
    git(folder, "tag", "v1.1");
    git(folder, "checkout", "--quiet", "-b", "humidity");
    step("Read the humidity, too", { "src/reader.h": "/* readings with humidity */\n" }, ben);
    git(folder, "checkout", "--quiet", "main");
    step("Sort stations by name", { "src/sort.c": "/* qsort() */\n" });
    git(folder, "mv", "docs/format.md", "docs/files.md");
    write(folder, "src/report.c", checked.replace("no stations", "no stations in this file"));
    write(folder, "notes.txt", "Ask Ben about the units.\nRelease 1.2 on Friday.\n");
    return { folder, ids };
}
