// Draws the lanes of the visible commits on a canvas.
import { width } from "./lanes.js";

export const LANE_WIDTH = 12;
const COLOURS = 6;
const RADIUS = 3.5;

/** The canvas behind the rows of a list. */
export class Graph {
    constructor(rowHeight) {
        this.rowHeight = rowHeight;
        this.canvas = document.createElement("canvas");
        this.canvas.className = "graph";
        this.canvas.setAttribute("aria-hidden", "true");
        this.query = matchMedia("(prefers-color-scheme: dark)");
        this.#readColours();
        this.query.addEventListener("change", () => this.#readColours());
    }

    #colours = [];

    #readColours() {
        const style = getComputedStyle(document.documentElement);
        this.#colours = Array.from({ length: COLOURS }, (_, index) => style.getPropertyValue(`--lane-${index}`).trim());
    }

    /**
     * Draws rows.
     * @param {Array} rows rows with `graph`, or null
     * @param {number} maxLanes lanes to the right of these are left out
     * @returns {number} the width in CSS pixels
     */
    draw(rows, maxLanes) {
        const lanes = Math.min(maxLanes, rows.reduce((most, row) => row ? Math.max(most, width(row.graph)) : most, 1));
        const size = [lanes * LANE_WIDTH, rows.length * this.rowHeight];
        const ratio = devicePixelRatio;
        const context = this.canvas.getContext("2d");
        if (this.canvas.width !== Math.round(size[0] * ratio) || this.canvas.height !== Math.round(size[1] * ratio)) {
            [this.canvas.width, this.canvas.height] = size.map((length) => Math.round(length * ratio));
            [this.canvas.style.width, this.canvas.style.height] = size.map((length) => `${length}px`);
        }
        context.setTransform(ratio, 0, 0, ratio, 0, 0);
        context.clearRect(0, 0, ...size);
        context.lineWidth = 1.75;
        rows.forEach((row, index) => { if (row) this.#drawRow(context, row, index * this.rowHeight, lanes); });
        return size[0];
    }

    #drawRow(context, row, top, lanes) {
        const { column, into, out, through } = row.graph;
        const middle = top + this.rowHeight / 2;
        const bottom = top + this.rowHeight;
        for (const lane of through) this.#line(context, lane, lane, top, bottom, lane, lanes);
        for (const lane of into) this.#line(context, lane, column, top, middle, lane, lanes);
        for (const lane of out) this.#line(context, column, lane, middle, bottom, lane, lanes);
        if (column >= lanes) return;
        context.fillStyle = this.#colours[column % COLOURS];
        context.beginPath();
        context.arc(centre(column), middle, RADIUS, 0, 2 * Math.PI);
        context.fill();
    }

    #line(context, from, to, top, bottom, lane, lanes) {
        if (from >= lanes && to >= lanes) return;
        context.strokeStyle = this.#colours[lane % COLOURS];
        context.beginPath();
        context.moveTo(centre(from), top);
        const half = (top + bottom) / 2;
        if (from === to) context.lineTo(centre(to), bottom);
        else context.bezierCurveTo(centre(from), half, centre(to), half, centre(to), bottom);
        context.stroke();
    }
}

function centre(lane) {
    return lane * LANE_WIDTH + LANE_WIDTH / 2;
}
