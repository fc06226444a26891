// The lanes of a commit graph. Pure functions.
//
// The state between two rows is an array with an entry per lane: the id of the commit for which the lane waits, or null
// if the lane is free. Rows come newest first, as git lists them.

/**
 * Places a commit.
 * @param {Array} lanes the state above the row; is not changed
 * @param {string} id the commit
 * @param {Array<string>} parents its parents
 * @returns {{column, into, out, through, lanes}} the lane of the commit; the lanes that end in it from above; those that
 *     leave it below, one per parent; the lanes that pass; and the state below the row
 */
export function place(lanes, id, parents) {
    let column = lanes.indexOf(id);
    if (column < 0) column = freeLane(lanes);
    const into = [];
    const through = [];
    const below = lanes.slice();
    lanes.forEach((waiting, lane) => {
        if (waiting === id) {
            into.push(lane);
            below[lane] = null;
        } else if (waiting !== null) {
            through.push(lane);
        }
    });
    const out = parents.map((parent, index) => laneOf(below, parent, index === 0 ? column : -1));
    while (below.length > 0 && below[below.length - 1] === null) below.pop();
    return { column, into, out, through, lanes: below };
}

/** Returns the number of lanes that a row needs. */
export function width(row) {
    return Math.max(row.column, ...row.into, ...row.out, ...row.through) + 1;
}

function freeLane(lanes) {
    const free = lanes.indexOf(null);
    return free < 0 ? lanes.length : free;
}

/**
 * Returns the lane for the parent: the preferred one, so that a line of first parents is straight; otherwise one that
 * waits for the parent already, or a free one.
 */
function laneOf(lanes, parent, preferred) {
    let lane = preferred >= 0 ? preferred : lanes.indexOf(parent);
    if (preferred < 0 && lane >= 0) return lane;
    if (lane < 0) lane = freeLane(lanes);
    while (lanes.length <= lane) lanes.push(null);
    lanes[lane] = parent;
    return lane;
}
