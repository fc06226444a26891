// Many lines of equal height, of which those far from the view are not elements yet.
import { element } from "./elements.js";

export const LINE_HEIGHT = 20;
const CHUNK = 100;

const observer = new IntersectionObserver((entries) => {
    for (const { isIntersecting, target } of entries) if (isIntersecting) fill(target);
}, { rootMargin: "1500px" });
const makers = new WeakMap();

function fill(chunk) {
    observer.unobserve(chunk);
    const make = makers.get(chunk);
    makers.delete(chunk);
    if (!make) return;
    chunk.style.height = "";
    chunk.append(...make());
}

/**
 * Returns an element with lines.
 * @param {number} count the number of lines
 * @param {function(number): Node} make returns a line; called when it comes near the view
 */
export function lazyLines(count, make) {
    const chunks = [];
    for (let start = 0; start < count; start += CHUNK) {
        const end = Math.min(count, start + CHUNK);
        const chunk = element("div.chunk", {});
        chunk.style.height = `${(end - start) * LINE_HEIGHT}px`;
        makers.set(chunk, () => Array.from({ length: end - start }, (_, offset) => make(start + offset)));
        if (chunks.length === 0) fill(chunk);
        else observer.observe(chunk);
        chunks.push(chunk);
    }
    return element("div.lines", {}, chunks);
}

/** Returns the element of a line of lazyLines(), creating it if necessary. */
export function lineElement(lines, index) {
    const chunk = lines.children[Math.floor(index / CHUNK)];
    if (!chunk) return null;
    fill(chunk);
    return chunk.children[index % CHUNK] ?? null;
}
