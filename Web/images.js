// Images of a repository, before and after a change.
import { element } from "./elements.js";
import { contentBytes, record, request, Type } from "./records.js";
import { textOf } from "./route.js";
import { workingCopyBytes } from "./untracked.js";

const MAX_BYTES = 30 << 20;
const types = {
    png: "image/png", jpg: "image/jpeg", jpeg: "image/jpeg", gif: "image/gif", webp: "image/webp", avif: "image/avif",
    bmp: "image/bmp", ico: "image/x-icon", svg: "image/svg+xml",
};

/** Returns the media type of an image with this path; undefined if it is no image. */
export function imageType(path) {
    return types[/\.([a-z]+)$/i.exec(textOf(path))?.[1].toLowerCase()];
}

/**
 * Returns a figure with the image.
 * @param {{revision, stage, isWorkingCopy}} source a revision, a stage of the index, or the working copy
 */
export async function imageFigure(app, path, { isWorkingCopy, ...source }, caption) {
    const bytes = isWorkingCopy ? await workingCopyBytes(path) : await trackedBytes(app, path, source);
    const address = URL.createObjectURL(new Blob([bytes], { type: imageType(path) }));
    const size = element("span", {});
    const image = element("img", { src: address, alt: `${caption}: ${textOf(path)}`,
        load: () => {
            size.textContent = `${image.naturalWidth} × ${image.naturalHeight}, ${bytes.length.toLocaleString("en")} bytes`;
            URL.revokeObjectURL(address);
        },
        error: () => { size.textContent = `This image cannot be shown; ${bytes.length.toLocaleString("en")} bytes`; } });
    return element("figure", {}, element("figcaption", {}, `${caption} `, size), image);
}

async function trackedBytes(app, path, { revision, stage }) {
    const limited = { files: [path], startingRevision: revision, limits: { outputBytes: MAX_BYTES } };
    const { result } = await app.connection.perform(request(Type.content, limited, { Stage: stage }));
    return contentBytes(record(result)[0]);
}
