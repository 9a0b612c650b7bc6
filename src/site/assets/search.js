// The search of the reference manual. Its index lies in search/, as scripts that call veldmapIndex, and is loaded when a
// search asks for it: the names when the box is entered, descriptions piece by piece as words of them are looked for.
// A million registers are some 35 MB of names. So names stay the text that they are, only what is shown is taken apart,
// and of what is loaded just so much is kept that searches in sites of 300,000 registers load nothing twice.
"use strict";

(() => {

const LETTERS = "nmklpqrstuvwxyz";
const MOST_HITS = 60;
const MOST_INSTANCES = 20;              // shown of one line, of types with very many
const MOST_LINES = 2000;                // looked at for words that stand in very many
const MOST_PARSED = 4000;               // lines of types that stay taken apart
const TOGETHER = 8;                     // lines of descriptions that are loaded side by side
const SLICE = 12;                       // ms of work between two looks at the keyboard

// Loading ------------------------------------------------------------------------------------------------------------------

const KEPT = {main: Infinity, names: 10e6, words: 2e6, texts: 1e6};      // letters, of pieces that are not in use
const loads = new Map();                // by file: {promise, resolve, kind, size}, what was used last at the end

function load(kind, number) {
    const key = kind + "-" + number;
    let entry = loads.get(key);
    if (entry) {
        if (kind !== "names") loads.delete(key), loads.set(key, entry);
        return entry.promise;
    }
    entry = {kind, size: 0};
    entry.promise = new Promise((resolve, reject) => {
        entry.resolve = resolve;
        const script = document.createElement("script");
        script.src = "search/" + key + ".js";
        script.onerror = () => { script.remove(); loads.delete(key); reject(new Error(script.src + " is missing")); };
        script.onload = () => script.remove();
        document.head.append(script);
    });
    loads.set(key, entry);
    return entry.promise;
}

/** Lets go of pieces beyond those to keep: of names, which every search reads from the first on, the newest, else the oldest. */
function letGo(kind, current) {
    const others = [...loads].filter(([, entry]) => entry.kind === kind && entry.size && entry !== current);
    let size = others.reduce((sum, [, entry]) => sum + entry.size, current.size);
    if (kind === "names") others.reverse();
    for (const [key, entry] of others) {
        if (size <= KEPT[kind]) return;
        size -= entry.size;
        loads.delete(key);
    }
}

const readers = {main: readMain, names: readNames, texts: text => text, words: text => text};

/** Takes a piece: its text is a comment in a function, so that it is in memory just once, as the source of its script. */
window.veldmapIndex = (kind, number, holder) => {
    const entry = loads.get(kind + "-" + number);
    if (!entry) return;
    const source = holder.toString();
    const text = source.slice(source.indexOf("/*") + 2, source.lastIndexOf("*/"));      // begins with a line's end
    entry.size = text.length;
    letGo(kind, entry);
    entry.resolve(readers[kind](text, number));
};

/** A text of its own, which keeps nothing of the piece that it stands in. */
const copyOf = (encoder => decoder => text => decoder.decode(encoder.encode(text)))(new TextEncoder())(new TextDecoder());

/** What stands in comments of scripts: "*" + "\/" is the end of one. */
const plainText = text => text.includes("\\") ? text.replace(/\\(.)/g, "$1") : text;

/** Where the lines of a text begin that ends with a line's end; behind the last, its length. */
function linesOf(text, from) {
    const begins = [];
    for (let at = from; at < text.length; at = text.indexOf("\n", at) + 1) begins.push(at);
    begins.push(text.length);
    return Uint32Array.from(begins);
}

// The list of instances, types and constants ---------------------------------------------------------------------------------

let main;                               // what readMain gave, once it is there

/** Instances by address, then types that have pages, then constants: a line each, of which only places are kept. */
function readMain(text) {
    const end = text.indexOf("\n", 1) + 1;
    main = {...JSON.parse(text.slice(1, end)), text, lines: linesOf(text, end)};
    const {instances, types} = main;
    main.addresses = new Uint32Array(instances);
    main.typeOf = new Int32Array(instances);
    main.pageOf = new Map();            // line by type
    main.instancesOf = new Map();       // the first by type; nextOf leads on
    main.nextOf = new Int32Array(instances).fill(-1);
    for (let at = instances - 1; at >= 0; --at) {
        const [, address, type] = cells(at);
        main.addresses[at] = parseInt(address, 16);
        const number = main.typeOf[at] = type ? parseInt(type, 36) : -1;
        if (number < 0) continue;
        main.nextOf[at] = main.instancesOf.get(number) ?? -1;
        main.instancesOf.set(number, at);
    }
    for (let at = instances; at < instances + types; ++at) main.pageOf.set(parseInt(cells(at)[1], 36), at);
    return main;
}

const cells = line => main.text.slice(main.lines[line], main.lines[line + 1] - 1).split("\t");

/** The name of a listed thing and the file of its page, without its ending. */
function listed(line) {
    const parts = cells(line);
    const name = plainText(parts[0]);
    return {name, file: (line < main.instances ? parts[3] : parts[2]) || name};
}

/** The instances of a type, or the page of one that has none: lines of the list. */
function placesOf(type) {
    const places = [];
    for (let at = main.instancesOf.get(type) ?? -1; at >= 0; at = main.nextOf[at]) places.push(at);
    return places.length ? places : main.pageOf.has(type) ? [main.pageOf.get(type)] : [];
}

/** The last of sorted numbers that is not above a value. */
function lastNotAbove(list, value, of = item => item) {
    let low = 0, high = list.length;
    while (low < high) {
        const middle = (low + high) >> 1;
        if (of(list[middle]) <= value) low = middle + 1;
        else high = middle;
    }
    return low - 1;
}

// A type, taken apart ------------------------------------------------------------------------------------------------------

function readNames(text, number) {
    const [firstType, firstLine] = main.names[number];
    const blocks = [], lines = [];      // where each type begins
    let line = firstLine;
    for (let at = 0; at < text.length - 1; at = text.indexOf("\n", at + 1)) {
        if (text.charCodeAt(at + 1) === 35) blocks.push(at + 1), lines.push(line);
        ++line;
    }
    return {text, firstType, blocks: Uint32Array.from(blocks), lines: Uint32Array.from(lines)};
}

const plainName = name => name.includes("%") ? decodeURIComponent(name) : name;
const NONE = Object.freeze([]);
const parsed = new Map();               // by type
let parsedLines = 0;

/** The lines of a type: [{name, id, offset, size, repeats, fields, parent, children}]; null for a closing line. */
function parseType(piece, type) {
    if (parsed.has(type)) return parsed.get(type);
    if (parsedLines > MOST_PARSED) parsed.clear(), parsedLines = 0;
    const at = type - piece.firstType;
    const text = copyOf(piece.text.slice(piece.blocks[at], piece.blocks[at + 1] ?? piece.text.length));
    const root = {name: "", id: "", offset: 0, size: 0, repeats: [], depth: 0, children: [], parent: null};
    const lines = [root];
    let open = root, place = 0;
    for (const line of text.split("\n").slice(1)) {
        if (!line) continue;
        if (line === "}") {
            if (open.ends >= 0) place = open.ends;
            open.size = Math.max(open.size, place - open.offset);
            open = open.parent;
            lines.push(null);
            continue;
        }
        const isGroup = line[0] === "{";
        const [word, attribute = "", fields = ""] = (isGroup ? line.slice(1) : line).split("\t");
        const [, kind, width, at, repeats] = /^([bhsm]?)([0-9a-f]*)(?:@([0-9a-f]+))?(.*)$/.exec(attribute);
        if (at !== undefined) place = parseInt(at, 16);
        const size = kind === "b" ? 1 : kind === "h" ? 2 : kind ? parseInt(width, 16) : isGroup ? 0 : 4;
        const node = {name: plainName(word), offset: place, size, isGroup, parent: open, children: isGroup ? [] : NONE, depth: open.depth,
                      fields: fields ? fields.split(",").map(plainName) : NONE, repeats: NONE, id: "", ends: -1};
        if (repeats) node.repeats = repeats.split("*").slice(1).map(repeat => {
            const [count, stride] = repeat.split(":");
            return {count: Number(count), stride: parseInt(stride, 16), letter: LETTERS[node.depth++]};
        });
        const own = !repeats || node.name.includes("]~") ? node.name : node.name + node.repeats.map(({letter}) => `[${letter}]`).join("");
        node.id = open.id ? open.id + "." + own : own;
        const first = node.repeats[0];
        const end = first ? place + first.count * first.stride : place + size;
        open.children.push(node);
        lines.push(node);
        if (isGroup) {
            node.ends = first ? end : -1;
            open = node;
        } else {
            place = end;
        }
    }
    parsed.set(type, lines);
    parsedLines += lines.length;
    return lines;
}

/** The repetitions around a node, outermost first. */
function repeatsAround(node) {
    return node.parent ? [...repeatsAround(node.parent), ...node.repeats] : node.repeats;
}

// Hits ---------------------------------------------------------------------------------------------------------------------

const hex8 = value => "0x" + (value >>> 0).toString(16).toUpperCase().padStart(8, "0");
const fragmentOf = id => encodeURIComponent(id).replace(/%5B/g, "[").replace(/%5D/g, "]");

/** Where a node or a field of it stands in an instance, or on the page of its type; place is a line of the list. */
function hitOf(place, node, field, indices = []) {
    const repeats = node ? repeatsAround(node) : [];
    const isInstance = place < main.instances;
    let id = node ? node.id : "";
    let address = (isInstance ? main.addresses[place] : 0) + (node ? node.offset : 0);
    const isMember = indices.length === repeats.length;
    repeats.forEach(({letter, stride, count}, at) => {
        if (!isMember || indices[at] >= count) return;
        id = id.replace(`[${letter}]`, `[${indices[at]}]`);
        address += indices[at] * stride;
    });
    if (field) id += "." + field;
    const {name, file} = listed(place);
    return {path: name + (id ? "." + id : ""), link: encodeURIComponent(file) + ".html" + (id ? "#" + fragmentOf(id) : ""),
            where: isInstance ? hex8(address) : "type"};
}

const quote = text => text.replace(/[.*+?^${}()|[\]\\\/-]/g, "\\$&");

/** How well a match stands in a name: 0 all of it, 1 its beginning, 2 the beginning of a word in it, 3 inside. */
function rank(before, after) {
    const begins = !before || /[\n\t,{#]/.test(before);
    if (begins) return !after || /[\n\t,\r]/.test(after) ? 0 : 1;
    return /[_.\d]/.test(before) ? 2 : 3;
}

/** Whether tokens stand in a path one behind the other. */
function holds(path, tokens) {
    let at = 0;
    const lower = path.toLowerCase();
    for (const token of tokens) {
        const found = lower.indexOf(token, at);
        if (found < 0) return false;
        at = found + token.length;
    }
    return true;
}

/** Where a token stands in a text, large or small letters alike; makes nothing on the way. */
class Matches {
    constructor(text, token, from = 0) {
        this.text = text;
        this.expression = new RegExp(quote(token), "gi");
        this.length = token.length;
        this.goOn(from);
    }

    goOn(from) { this.expression.lastIndex = from; }

    next() {
        const isOne = this.expression.test(this.text);
        this.behind = this.expression.lastIndex;
        this.at = this.behind - this.length;
        return isOne;
    }
}

/** Lines of descriptions, a bit each. */
class Lines {
    constructor() {
        this.bits = new Uint8Array((main.count >> 3) + 1);
        this.size = 0;
    }

    has(line) { return (this.bits[line >> 3] >> (line & 7) & 1) === 1; }

    add(line) {
        if (this.has(line)) return;
        this.bits[line >> 3] |= 1 << (line & 7);
        ++this.size;
    }

    /** Calls with each line in rising order, until that gives true. */
    each(call) {
        for (let at = 0; at < this.bits.length; ++at) {
            for (let rest = this.bits[at]; rest; rest &= rest - 1) {
                if (call(at * 8 + 31 - Math.clz32(rest & -rest))) return;
            }
        }
    }
}

const channel = new MessageChannel();   // timers would wait 4 ms
const turns = [];
channel.port1.onmessage = () => { for (const resolve of turns.splice(0)) resolve(); };

/** Lets keys and painting have their turn. */
function turn() {
    return new Promise(resolve => {
        turns.push(resolve);
        channel.port2.postMessage(0);
    });
}

const noMatches = new Map();            // pieces of names that have none of a token, by tokens of the search before

/** One search. What it finds is in best, sorted; found(search) is called when there is something new to show. */
class Search {
    constructor(text, found) {
        this.text = text.trim();
        this.found = found;
        this.isOver = false;
        this.hits = [];
        this.links = new Set();
        this.more = false;
        this.shown = 0;                 // hits when found was called last
        const plain = this.text.toLowerCase().replace(/^\$/, "");
        this.indices = [...plain.matchAll(/\[(\d+)\]/g)].map(match => Number(match[1]));
        this.tokens = plain.replace(/\[\w*\]/g, " ").split(/[\s.>]+/).filter(Boolean);
        this.started = this.begin = performance.now();
        this.kept = new Uint32Array(8);         // hits by how well they match, registers and fields apart
    }

    add(hit, score) {
        if (this.links.has(hit.link)) return;
        this.links.add(hit.link);
        this.hits.push({...hit, score, order: this.links.size});
    }

    best() {
        this.hits.sort((a, b) => a.score - b.score || a.order - b.order);
        if (this.hits.length > MOST_HITS) this.more = true;
        return this.hits.slice(0, MOST_HITS);
    }

    /** Shows what is new. */
    tell() {
        if (this.isOver || this.shown === this.hits.length) return;
        this.shown = this.hits.length;
        this.found(this);
    }

    /** Gives way to keys and painting now and then; true when this search is no longer wanted. */
    async pause() {
        if (performance.now() - this.begin < SLICE) return this.isOver;
        if (this.shown === 0 && !this.isOver && performance.now() - this.started > 150) this.found(this);
        this.tell();
        await turn();
        this.begin = performance.now();
        return this.isOver;
    }

    async run() {
        if (!main) await load("main", 0);
        if (this.isOver) return;
        if (!this.tokens.length) return this.found(this, true);
        await this.findAddress();
        if (this.isOver) return;
        this.findListed();
        this.tell();
        await Promise.all([this.findAllNames(), this.findWords()]);
        if (!this.isOver) this.found(this, true);
    }

    // Addresses, also of what lies inside of a register or a memory

    async findAddress() {
        const digits = /^(?:0x([0-9a-f_]{1,8})|([0-9a-f]{8}))$/.exec(this.text.toLowerCase());
        if (!digits) return;
        const typed = (digits[1] || digits[2]).replace(/_/g, "");
        const address = parseInt(typed, 16);
        let near = lastNotAbove(main.addresses, address);
        for (let tries = 0; near >= 0 && tries < 8; --near, ++tries) {
            const type = main.typeOf[near];
            if (type < 0) continue;
            const piece = await load("names", lastNotAbove(main.names, type, entry => entry[0]));
            const root = parseType(piece, type)[0];
            const found = this.findInside(root, address - main.addresses[near], []);
            if (!found) continue;
            const hit = hitOf(near, found.node, null, found.indices);
            if (found.rest) hit.says = `byte ${found.rest} of it`;
            this.add(hit, -1);
        }
        const first = address * 16 ** (8 - typed.length), behind = (address + 1) * 16 ** (8 - typed.length);
        for (let at = lastNotAbove(main.addresses, first - 1) + 1; at < main.instances && main.addresses[at] < behind; ++at) {
            this.add(hitOf(at), -0.5);
            if (this.hits.length >= MOST_HITS) { this.more = true; break; }
        }
    }

    findInside(group, rest, indices) {
        for (const node of group.children) {
            let inside = rest - node.offset;
            if (inside < 0) continue;
            const own = [];
            let moved = 0;
            for (const {count, stride} of node.repeats) {
                const index = Math.min(stride ? Math.floor(inside / stride) : 0, count - 1);
                own.push(index);
                inside -= index * stride;
                moved += index * stride;
            }
            if (own.some(index => index < 0)) continue;
            if (node.isGroup) {
                const found = this.findInside(node, rest - moved, [...indices, ...own]);
                if (found) return found;
            } else if (inside < node.size) {
                return {node, indices: [...indices, ...own], rest: inside};
            }
        }
        return null;
    }

    // Names

    findListed() {
        const {text, lines, instances, types} = main;
        const matches = new Matches(text, this.tokens.at(-1), lines[0]);
        const kept = [0, 0, 0, 0];
        while (matches.next()) {
            const line = lastNotAbove(lines, matches.at);
            matches.goOn(lines[line + 1]);                  // one match of a line is enough
            const end = text.indexOf("\t", lines[line]);
            if (matches.behind > end) continue;
            const score = rank(text[matches.at - 1], text[matches.behind]);
            if (kept[score] >= MOST_HITS) { this.more = true; continue; }
            if (this.tokens.length > 1 && !holds(text.slice(lines[line], end), this.tokens)) continue;
            ++kept[score];
            if (line < instances + types) this.add(hitOf(line), score + (line < instances ? 0 : 0.2));
            else this.add(this.constantAt(line), score + 0.3);
        }
    }

    constantAt(line) {
        const [name, link] = cells(line).map(plainText);
        return {path: name, link: link.replace("#", ".html#"), where: link.split(/[#~]/)[0]};
    }

    async findAllNames() {
        const last = this.tokens.at(-1);
        const empty = new Set([...noMatches].filter(([token]) => last.includes(token)).flatMap(([, pieces]) => pieces));
        const types = this.tokens.slice(0, -1).map(token => this.typesNamed(token));
        for (let at = 0; at < main.names.length; ++at) {
            if (empty.has(at)) continue;
            const piece = await load("names", at);
            if (this.isOver || await this.findNames(piece, types, () => empty.add(at))) return;
        }
        noMatches.clear();
        noMatches.set(last, [...empty]);
        this.tell();
    }

    /** The types of instances in whose names a token stands, a byte each. */
    typesNamed(token) {
        const {text, lines, instances, types} = main;
        const named = new Uint8Array(main.typeCount);
        const matches = new Matches(text, token, lines[0]);
        while (matches.next()) {
            const line = lastNotAbove(lines, matches.at);
            if (line >= instances + types) break;
            matches.goOn(lines[line + 1]);
            if (text.indexOf("\t", lines[line]) <= matches.at) continue;
            const type = line < instances ? main.typeOf[line] : parseInt(cells(line)[1], 36);
            if (type >= 0) named[type] = 1;
        }
        return named;
    }

    /** The types of a piece in which all tokens but the last can stand, a byte each; null when there are none. */
    blocksWith(piece, types) {
        const may = new Uint8Array(piece.blocks.length).fill(1);
        types.forEach((named, number) => {
            const has = Uint8Array.from(may, (_, block) => named[piece.firstType + block]);
            const matches = new Matches(piece.text, this.tokens[number]);
            while (matches.next()) {
                const block = lastNotAbove(piece.blocks, matches.at);
                has[block] = 1;
                matches.goOn(piece.blocks[block + 1] ?? piece.text.length);
            }
            has.forEach((value, block) => { may[block] &= value; });
        });
        return may.includes(1) ? may : null;
    }

    async findNames(piece, types, tellNone) {
        const {text} = piece;
        const matches = new Matches(text, this.tokens.at(-1));
        let isOne = matches.next();
        if (!isOne) tellNone();
        const blocks = isOne && this.blocksWith(piece, types);
        let steps = 0;
        for (; blocks && isOne; isOne = matches.next()) {
            if ((++steps & 255) === 0 && await this.pause()) return true;
            const {at} = matches;
            const block = lastNotAbove(piece.blocks, at);
            if (!blocks[block]) {
                matches.goOn(piece.blocks[block + 1] ?? text.length);
                continue;
            }
            const begin = text.lastIndexOf("\n", at) + 1;
            if (text[begin] === "#") continue;
            const tab = text.indexOf("\t", begin);
            const fields = tab >= 0 && tab < at ? text.indexOf("\t", tab + 1) : -1;
            if (tab >= 0 && tab < at && (fields < 0 || fields > at)) continue;      // in a place
            const isField = fields >= 0 && fields < at;
            const score = rank(text[at - 1], text[matches.behind]);
            const slot = 2 * score + (isField ? 1 : 0);
            if (this.kept[slot] >= MOST_HITS) { this.more = true; continue; }
            const type = piece.firstType + block;
            const node = parseType(piece, type)[this.lineOf(text, piece.blocks[block], begin)];
            if (!node) continue;
            const field = isField ? node.fields[text.slice(fields, at).split(",").length - 1] : null;
            this.kept[slot] += this.addPlaces(type, node, field, score + (field ? 0.5 : 0.1));
            if (this.shown === 0) this.tell();
        }
        return this.pause();
    }

    /** Adds a node or field wherever its type stands and the tokens are in the path; how often that is. */
    addPlaces(type, node, field, score) {
        const inside = "." + node.id.replace(/\[\w\]/g, "") + (field ? "." + field : "");
        let shown = 0;
        for (const place of placesOf(type)) {
            if (this.tokens.length > 1 && !holds(listed(place).name + inside, this.tokens)) continue;
            if (shown >= MOST_INSTANCES) { this.more = true; break; }
            ++shown;
            this.add(hitOf(place, node, field, this.indices), score);
        }
        return shown;
    }

    /** The number of the line at an offset, counted from that of a block. */
    lineOf(text, block, begin) {
        let line = 0;
        for (let at = text.indexOf("\n", block); at >= 0 && at < begin; at = text.indexOf("\n", at + 1)) ++line;
        return line;
    }

    // Words of descriptions and options

    /** The lines in which a word stands, and those with words that begin so: of both just the first few if few are enough. */
    async linesOfWord(word, isFew) {
        const first = await load("words", 0);
        const firsts = first.trim() ? first.trim().split("\n") : [];
        const lines = {word, whole: new Lines(), begun: new Lines()};
        let at = firsts.findIndex(first => first >= word);
        at = at < 0 ? firsts.length - 1 : Math.max(0, at - 1);
        for (; at >= 0 && at < firsts.length && (firsts[at] <= word || firsts[at].startsWith(word)); ++at) {
            const text = await load("words", at + 1);
            for (let found = text.indexOf("\n" + word); found >= 0; found = text.indexOf("\n" + word, found + 1)) {
                const tab = text.indexOf("\t", found);
                readLines(text, tab + 1, tab - found - 1 === word.length ? lines.whole : lines.begun, isFew ? 4 * MOST_HITS : Infinity);
                if (await this.pause() || (isFew && lines.begun.size > MOST_HITS)) return lines;
            }
        }
        return lines;
    }

    async findWords() {
        const words = [...new Set(this.tokens.flatMap(token => token.split(/[^\p{L}\p{N}]+/u)).filter(word => word.length >= 2)
            .map(word => word.slice(0, 40)))];
        if (!words.length) return;
        const found = await Promise.all(words.map(word => this.linesOfWord(word, words.length === 1)));
        if (this.isOver) return;
        const has = ({whole, begun}, line) => whole.has(line) || begun.has(line);
        const rarest = found.filter(({whole, begun}) => whole.size + begun.size)
            .sort((a, b) => a.whole.size + a.begun.size - b.whole.size - b.begun.size);
        // A word may stand in the description or in the path; the rarest one that descriptions have leads.
        for (const leading of rarest) {
            const others = found.filter(it => it !== leading);
            let shown = 0;
            for (const [lines, score] of [[leading.whole, 2.5], [leading.begun, 3.5]]) {
                shown += await this.addLines(this.sorted(lines, others, has), score, words, others, has, MOST_HITS - shown);
                if (this.isOver) return;
            }
            if (shown > 0) return;
        }
    }

    /** Lines with more of the other words before those with less, as far as they are looked at. */
    sorted(lines, others, has) {
        const by = others.map(() => []);
        by.push([]);
        lines.each(line => {
            let count = 0;
            for (const other of others) count += has(other, line) ? 1 : 0;
            if (by[count].length <= MOST_LINES) by[count].push(line);
            return by.at(-1).length > MOST_LINES;
        });
        return by.reverse().flat();
    }

    /** Adds lines of which the other words are in the description or in the path; how many. */
    async addLines(lines, score, words, others, has, most) {
        let shown = 0;
        for (let at = 0; at < lines.length && shown < most; at += TOGETHER) {
            if (at > MOST_LINES) { this.more = true; break; }
            const some = lines.slice(at, at + TOGETHER);
            const added = await Promise.all(some.map(line =>
                this.lineHits(line, words, others.filter(other => !has(other, line)).map(({word}) => word))));
            if (this.isOver) return shown;
            for (const hits of added) {
                if (hits.length) ++shown;
                for (const hit of hits) this.add(hit, score);
            }
            if (this.shown === 0) this.tell();
            if (await this.pause()) return shown;
        }
        if (shown >= most) this.more = true;
        return shown;
    }

    /** What a line describes, wherever it stands and the words that are not in it are in its path. */
    async lineHits(line, words, others) {
        const piece = await load("names", lastNotAbove(main.names, line, entry => entry[1]));
        const block = lastNotAbove(piece.lines, line);
        const type = piece.firstType + block;
        const node = parseType(piece, type)[line - piece.lines[block]];
        if (!node) return [];
        const shown = line === piece.lines[block] ? null : node;
        const isThere = place => {
            const path = (listed(place).name + "." + node.id).toLowerCase();
            return others.every(word => path.includes(word));
        };
        const places = placesOf(type).filter(place => !others.length || isThere(place));
        if (!places.length || this.isOver) return [];
        const number = lastNotAbove(main.texts, line);
        const texts = textAt(await load("texts", number), line - main.texts[number]);
        const wanted = words.filter(word => !others.includes(word));
        const at = Math.max(0, texts.findIndex(text => wanted.some(word => text.toLowerCase().includes(word))));
        if (places.length > 3) this.more = true;
        return places.slice(0, 3).map(place => ({...hitOf(place, shown, at ? node.fields[at - 1] : null, this.indices), says: texts[at]}));
    }
}

/** Adds the lines that are listed from a place of a text on: how far each lies behind the one before, in digits and letters. */
function readLines(text, at, lines, most) {
    let line = 0, step = 0;
    for (let count = 0; count < most; ++at) {
        const code = text.charCodeAt(at);
        if (code > 32) {
            step = step * 36 + (code >= 97 ? code - 87 : code - 48);
            continue;
        }
        line += step;
        step = 0;
        lines.add(line);
        ++count;
        if (code !== 32) return;
    }
}

/** The texts of a line of a piece: that of the register, then those of its fields. */
function textAt(piece, number) {
    let begin = 1;
    for (; number > 0; --number) begin = piece.indexOf("\n", begin) + 1;
    return copyOf(piece.slice(begin, piece.indexOf("\n", begin))).split("\t").map(plainText);
}

// The box ------------------------------------------------------------------------------------------------------------------

const holder = document.getElementById("-search");
const input = document.createElement("input");
Object.assign(input, {className: "search", type: "search", placeholder: "Search names, addresses, words   /", autocomplete: "off", spellcheck: false});
for (const [name, value] of Object.entries({role: "combobox", "aria-label": "Search", "aria-expanded": "false", "aria-controls": "-hits",
                                            "aria-autocomplete": "list"})) input.setAttribute(name, value);
const panel = document.createElement("div");
panel.className = "hits";
panel.hidden = true;
const list = document.createElement("div");
list.id = "-hits";
list.setAttribute("role", "listbox");
list.setAttribute("aria-label", "Hits");
const count = document.createElement("div");
count.className = "count";
count.setAttribute("role", "status");
panel.append(count, list);
holder.append(input, panel);

let search = null;
let selected = -1;
let isMoved = false;                    // the reader has chosen a hit; new ones must not take its place

/** Text with the words of the search marked. */
function marked(text, tokens) {
    const fragment = document.createDocumentFragment();
    const expression = new RegExp(tokens.map(quote).sort((a, b) => b.length - a.length).join("|"), "gi");
    let behind = 0;
    for (const match of text.matchAll(expression)) {
        if (!match[0]) continue;
        const mark = document.createElement("mark");
        mark.textContent = match[0];
        fragment.append(text.slice(behind, match.index), mark);
        behind = match.index + match[0].length;
    }
    fragment.append(text.slice(behind));
    return fragment;
}

/** The part of a long text around the first word that is looked for. */
function excerpt(text, tokens) {
    const lower = text.toLowerCase();
    const at = Math.min(...tokens.map(token => lower.indexOf(token)).filter(at => at >= 0), text.length);
    const begin = at > 90 && at < text.length ? at - 60 : 0;
    return (begin ? "…" : "") + text.slice(begin, begin + 180) + (text.length > begin + 180 ? "…" : "");
}

function show(hits, isDone) {
    const chosenLink = isMoved && list.children[selected] ? list.children[selected].dataset.link : null;
    list.replaceChildren(...hits.map((hit, at) => {
        const option = document.createElement("div");
        option.id = "-hit" + at;
        option.setAttribute("role", "option");
        option.dataset.link = hit.link;
        const where = document.createElement("span");
        where.className = "where";
        where.textContent = hit.where;
        const path = document.createElement("span");
        path.className = "path";
        path.append(marked(hit.path, search.tokens));
        option.append(where, path);
        if (hit.says) {
            const says = document.createElement("span");
            says.className = "says";
            says.append(marked(excerpt(hit.says, search.tokens), search.tokens));
            option.append(says);
        }
        return option;
    }));
    const again = hits.findIndex(hit => hit.link === chosenLink);
    select(again >= 0 ? again : hits.length ? 0 : -1, false);
    count.textContent = hits.length ? (search.more && hits.length >= MOST_HITS ? `The best ${hits.length} hits` : hits.length === 1 ? "1 hit" : `${hits.length} hits`)
        : isDone ? "Nothing found" : "Searching…";
    list.classList.remove("old");
    list.setAttribute("aria-busy", String(!isDone));
    open(true);
    if (isDone && search.isToFollow) follow(list.children[selected]);
}

function select(at, isByReader = true) {
    if (list.children[selected]) list.children[selected].setAttribute("aria-selected", "false");
    selected = at;
    isMoved = isByReader;
    const option = list.children[at];
    if (!option) return input.removeAttribute("aria-activedescendant");
    option.setAttribute("aria-selected", "true");
    input.setAttribute("aria-activedescendant", option.id);
    if (isByReader) option.scrollIntoView({block: "nearest"});
}

function open(isOpen) {
    panel.hidden = !isOpen;
    input.setAttribute("aria-expanded", String(isOpen));
}

function stop() {
    if (search) search.isOver = true;
    open(false);
}

function start() {
    if (search) search.isOver = true;
    if (!input.value.trim()) return stop();
    isMoved = false;
    list.classList.add("old");          // until the first hits of this search
    list.setAttribute("aria-busy", "true");
    search = new Search(input.value, (it, isDone) => { if (it === search) show(it.best(), isDone); });
    search.run().catch(error => { count.textContent = String(error.message); open(true); });
}

/** What every search reads, before the first key: as many names as are kept. */
async function preload() {
    await load("main", 0);
    await load("words", 0);
    for (let at = 0, size = 0; at < main.names.length && size < KEPT.names; ++at) size += (await load("names", at)).text.length;
}

function follow(option) {
    if (!option) return;
    stop();
    const link = option.dataset.link;
    const [file, fragment] = link.split("#");
    if (fragment !== undefined && location.pathname.endsWith("/" + file)) {
        if (location.hash === "#" + fragment) dispatchEvent(new HashChangeEvent("hashchange"));
        location.hash = "#" + fragment;
    } else {
        location.href = link;
    }
    input.blur();
}

input.addEventListener("input", start);
input.addEventListener("focus", () => {
    preload().catch(() => {});
    if (input.value.trim() && panel.hidden) start();
});
input.addEventListener("keydown", event => {
    const step = {ArrowDown: 1, ArrowUp: -1, PageDown: 8, PageUp: -8}[event.key];
    if (step && !panel.hidden) {
        select(Math.max(0, Math.min(list.children.length - 1, selected + step)));
    } else if (event.key === "Enter") {
        if (!list.classList.contains("old")) follow(list.children[selected]);
        else if (search) search.isToFollow = true;              // there are no hits yet
    } else if (event.key === "Escape") {
        if (panel.hidden || !input.value) { input.blur(); stop(); } else { input.value = ""; stop(); }
    } else {
        return;
    }
    event.preventDefault();
});
list.addEventListener("mousedown", event => event.preventDefault());
list.addEventListener("click", event => follow(event.target.closest("[role=option]")));
list.addEventListener("mousemove", event => {
    const option = event.target.closest("[role=option]");
    if (option && option !== list.children[selected]) {
        const at = [...list.children].indexOf(option);
        if (list.children[selected]) list.children[selected].setAttribute("aria-selected", "false");
        selected = at;
        option.setAttribute("aria-selected", "true");
        input.setAttribute("aria-activedescendant", option.id);
    }
});
addEventListener("click", event => { if (!holder.contains(event.target)) open(false); });
addEventListener("keydown", event => {
    if (event.key !== "/" || event.ctrlKey || event.metaKey || event.altKey || /^(INPUT|SELECT|TEXTAREA)$/.test(event.target.tagName)) return;
    event.preventDefault();
    input.focus();
    input.select();
});

})();
