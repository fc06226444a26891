// PNG files: https://www.w3.org/TR/png-3/
import zlib from "node:zlib";

/** A chunk of a PNG file. */
function chunk(type, data) {
    const body = Buffer.concat([Buffer.from(type), data]);
    const result = Buffer.alloc(body.length + 8);
    result.writeUInt32BE(data.length);
    body.copy(result, 4);
    result.writeUInt32BE(crc32(body), body.length + 4);
    return result;
}

/** The neighbour that filter 4 of the PNG specification chooses. */
function nearest(left, up, corner) {
    const [a, b, c] = [left, up, corner].map((value) => Math.abs(left + up - corner - value));
    return a <= b && a <= c ? left : b <= c ? up : corner;
}

/** Replaces the filters of the lines, of which filter 0 suits text best. */
function withoutFilters(data, lineSize, pixelSize) {
    for (let start = 0; start < data.length; start += lineSize + 1) {
        const filter = data[start];
        data[start] = 0;
        for (let at = start + 1; at <= start + lineSize; at++) {
            const left = at - pixelSize > start ? data[at - pixelSize] : 0;
            const up = start ? data[at - lineSize - 1] : 0;
            const corner = start && at - pixelSize > start ? data[at - lineSize - 1 - pixelSize] : 0;
            data[at] += [0, left, up, (left + up) >> 1, nearest(left, up, corner)][filter];
        }
    }
    return data;
}

/** Returns the same picture in fewer bytes: Chromium compresses quickly. It has 8 bits per colour, with or without alpha. */
export function compressedPng(bytes) {
    const others = { before: [], after: [] };
    const data = [];
    for (let at = 8; at < bytes.length;) {
        const end = at + 12 + bytes.readUInt32BE(at);
        if (bytes.toString("latin1", at + 4, at + 8) === "IDAT") data.push(bytes.subarray(at + 8, end - 4));
        else others[data.length ? "after" : "before"].push(bytes.subarray(at, end));
        at = end;
    }
    const pixelSize = bytes[25] === 6 ? 4 : 3;
    const lines = withoutFilters(zlib.inflateSync(Buffer.concat(data)), bytes.readUInt32BE(16) * pixelSize, pixelSize);
    const packed = zlib.deflateSync(lines, { level: 9, memLevel: 9 });
    return Buffer.concat([bytes.subarray(0, 8), ...others.before, chunk("IDAT", packed), ...others.after]);
}

/** A PNG of one colour. */
export function png(red, size = 8) {
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
