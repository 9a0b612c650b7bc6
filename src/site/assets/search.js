// The search of the reference manual. Its index lies in search/, as scripts that call veldmapIndex, and is loaded when a
// search asks for it: the names when the box is entered, descriptions piece by piece as words of them are looked for.
// A million registers are some 40 MB of names, so names stay the text that they are; only what is shown is taken apart.
"use strict";

(() => {

const LETTERS = "nmklpqrstuvwxyz";
const MOST_HITS = 60;
const MOST_INSTANCES = 20;              // shown of one line, of types with very many
const MOST_LINES = 4000;                // looked at for words that stand in very many
const SLICE = 12;                       // ms of work between two looks at the keyboard

// Loading ------------------------------------------------------------------------------------------------------------------

const loads = new Map();                // by kind and number: {promise, resolve}

function load(kind, number) {
    const key = kind + "-" + number;
    let entry = loads.get(key);
    if (!entry) {
        entry = {};
        entry.promise = new Promise((resolve, reject) => {
            entry.resolve = resolve;
            const script = document.createElement("script");
            script.src = "search/" + key + ".js";
            script.onerror = () => { loads.delete(key); reject(new Error(script.src + " is missing")); };
            script.onload = () => script.remove();
            document.head.append(script);
        });
        loads.set(key, entry);
    }
    return entry.promise;
}

const readers = {main: readMain, names: readNames, texts: text => text.split("\n"), words: text => "\n" + text};
window.veldmapIndex = (kind, number, text) => loads.get(kind + "-" + number)?.resolve(readers[kind](text, number));

let main;                               // what readMain gave, once it is there

function readMain(text) {
    const [head, ...lines] = text.split("\n");
    main = {...JSON.parse(head), instances: [], byType: new Map(), types: new Map(), constants: []};
    for (const line of lines) {
        const [name, second, third, fourth] = line.slice(1).split("\t");
        if (line[0] === "i") {
            const instance = {name, address: parseInt(second, 16), type: third ? parseInt(third, 36) : -1, file: fourth || name};
            main.instances.push(instance);
            if (!main.byType.has(instance.type)) main.byType.set(instance.type, []);
            main.byType.get(instance.type).push(instance);
        } else if (line[0] === "t") {
            main.types.set(parseInt(second, 36), {name, file: third});
        } else if (line[0] === "c") {
            main.constants.push({name, link: second});
        }
    }
    return main;
}

function readNames(text, number) {
    text = "\n" + text;
    const [firstType, firstLine] = main.names[number];
    const blocks = [];                  // where each type begins
    for (let at = text.indexOf("\n#"); at >= 0; at = text.indexOf("\n#", at + 1)) blocks.push(at + 1);
    return {text, firstType, firstLine, blocks, lines: null};
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

const plainName = name => name.includes("%") ? decodeURIComponent(name) : name;
const parsed = new Map();               // by type

/** The lines of a type: [{name, id, offset, size, repeats, fields, parent, children}]; null for a closing line. */
function parseType(piece, type) {
    if (parsed.has(type)) return parsed.get(type);
    if (parsed.size > 500) parsed.clear();
    const at = type - piece.firstType;
    const text = piece.text.slice(piece.blocks[at], piece.blocks[at + 1] ?? piece.text.length);
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
        const node = {name: plainName(word), offset: place, size, isGroup, isMemory: kind === "m", parent: open, children: [], depth: open.depth,
                      fields: fields ? fields.split(",").map(plainName) : [], repeats: []};
        for (const repeat of repeats.split("*").slice(1)) {
            const [count, stride] = repeat.split(":");
            const letter = LETTERS[node.depth++];
            node.repeats.push({count: Number(count), stride: parseInt(stride, 16), letter});
        }
        const own = node.name + (node.name.includes("]~") ? "" : node.repeats.map(({letter}) => `[${letter}]`).join(""));
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
    return lines;
}

/** The repetitions around a node, outermost first. */
function repeatsAround(node) {
    return node.parent ? [...repeatsAround(node.parent), ...node.repeats] : node.repeats;
}

// Hits ---------------------------------------------------------------------------------------------------------------------

const hex8 = value => "0x" + (value >>> 0).toString(16).toUpperCase().padStart(8, "0");
const fragmentOf = id => encodeURIComponent(id).replace(/%5B/g, "[").replace(/%5D/g, "]");

/** Where a node or a field of it stands in an instance, or with null on the page of its type. */
function hitOf(type, instance, node, field, indices = []) {
    const repeats = node ? repeatsAround(node) : [];
    let id = node ? node.id : "";
    let address = (instance ? instance.address : 0) + (node ? node.offset : 0);
    const isMember = indices.length === repeats.length;
    repeats.forEach(({letter, stride, count}, at) => {
        if (!isMember || indices[at] >= count) return;
        id = id.replace(`[${letter}]`, `[${indices[at]}]`);
        address += indices[at] * stride;
    });
    if (field) id += "." + field;
    const page = instance || main.types.get(type);
    return {path: page.name + (id ? "." + id : ""), link: encodeURIComponent(page.file) + ".html" + (id ? "#" + fragmentOf(id) : ""),
            where: instance ? hex8(address) : "type"};
}

/** The places of a type: its instances, or its page if it has none. */
function placesOf(type) {
    const instances = main.byType.get(type) || [];
    return instances.length ? instances : main.types.has(type) ? [null] : [];
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

/** One search. What it finds is in best, sorted; found(search) is called when there is something new to show. */
class Search {
    constructor(text, found) {
        this.text = text.trim();
        this.found = found;
        this.isOver = false;
        this.hits = [];
        this.links = new Set();
        this.more = false;
        const plain = this.text.toLowerCase().replace(/^\$/, "");
        this.indices = [...plain.matchAll(/\[(\d+)\]/g)].map(match => Number(match[1]));
        this.tokens = plain.replace(/\[\w*\]/g, " ").split(/[\s.>]+/).filter(Boolean);
        this.begin = performance.now();
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

    /** Gives way to keys and painting now and then; true when this search is no longer wanted. */
    async pause() {
        if (performance.now() - this.begin < SLICE) return this.isOver;
        if (!this.isOver) this.found(this);
        await new Promise(resolve => setTimeout(resolve));
        this.begin = performance.now();
        return this.isOver;
    }

    async run() {
        if (!main) await load("main", 0);
        if (this.isOver || !this.tokens.length) return;
        await this.findAddress();
        this.findListed();
        for (let at = 0; at < main.names.length; ++at) {
            const piece = await load("names", at);
            if (this.isOver || await this.findNames(piece)) return;
        }
        this.found(this);
        await this.findWords();
        if (!this.isOver) this.found(this, true);
    }

    // Addresses, also of what lies inside of a register or a memory

    async findAddress() {
        const digits = /^(?:0x([0-9a-f_]{1,8})|([0-9a-f]{8}))$/.exec(this.text.toLowerCase());
        if (!digits) return;
        const typed = (digits[1] || digits[2]).replace(/_/g, "");
        const address = parseInt(typed, 16);
        let near = lastNotAbove(main.instances, address, instance => instance.address);
        for (let tries = 0; near >= 0 && tries < 8; --near, ++tries) {
            const instance = main.instances[near];
            if (instance.type < 0) continue;
            const piece = await load("names", lastNotAbove(main.names, instance.type, entry => entry[0]));
            const root = parseType(piece, instance.type)[0];
            const found = this.findInside(root, address - instance.address, []);
            if (!found) continue;
            const hit = hitOf(instance.type, instance, found.node, null, found.indices);
            if (found.rest) hit.says = `byte ${found.rest} of it`;
            this.add(hit, -1);
        }
        for (const instance of main.instances) {
            if (instance.address.toString(16).padStart(8, "0").startsWith(typed)) this.add(hitOf(instance.type, instance), -0.5);
            if (this.hits.length >= MOST_HITS) break;
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
        const last = this.tokens.at(-1);
        const before = this.tokens.slice(0, -1);
        const test = (name, hit, more) => {
            const at = name.toLowerCase().indexOf(last);
            if (at >= 0 && (!before.length || holds(name, this.tokens)))
                this.add(hit(), rank(name[at - 1], name[at + last.length]) + more);
        };
        for (const instance of main.instances) test(instance.name, () => hitOf(instance.type, instance), 0);
        for (const [type, page] of main.types) test(page.name, () => hitOf(type, null), 0.2);
        for (const {name, link} of main.constants)
            test(name, () => ({path: name, link: link.replace("#", ".html#"), where: link.split(/[#~]/)[0]}), 0.3);
    }

    async findNames(piece) {
        const expression = new RegExp(quote(this.tokens.at(-1)), "gi");
        const before = this.tokens.slice(0, -1);
        const {text} = piece;
        const kept = [0, 0, 0, 0];
        let steps = 0;
        for (let match = expression.exec(text); match; match = expression.exec(text)) {
            if ((++steps & 255) === 0 && await this.pause()) return true;
            const at = match.index;
            const score = rank(text[at - 1], text[at + match[0].length]);
            if (!before.length && kept[score] >= MOST_HITS) { this.more = true; continue; }
            const begin = text.lastIndexOf("\n", at) + 1;
            if (text[begin] === "#") continue;
            const tab = text.indexOf("\t", begin);
            const fields = tab >= 0 && tab < at ? text.indexOf("\t", tab + 1) : -1;
            if (tab >= 0 && tab < at && (fields < 0 || fields > at)) continue;      // in a place
            const block = lastNotAbove(piece.blocks, at);
            const type = piece.firstType + block;
            const nodes = parseType(piece, type);
            const node = nodes[this.lineOf(text, piece.blocks[block], begin)];
            if (!node) continue;
            const field = fields >= 0 && fields < at ? node.fields[text.slice(fields, at).split(",").length - 1] : null;
            let shown = 0;
            for (const instance of placesOf(type)) {
                const hit = hitOf(type, instance, node, field, this.indices);
                if (before.length && !holds(hit.path.replace(/\[\w\]/g, ""), this.tokens)) continue;
                if (shown++ >= MOST_INSTANCES) { this.more = true; break; }
                this.add(hit, score + (field ? 0.5 : 0.1));
                ++kept[score];
            }
            if (this.hits.length > 40 * MOST_HITS) this.hits = this.best();
        }
        return this.pause();
    }

    /** The number of the line at an offset, counted from that of a block. */
    lineOf(text, block, begin) {
        let line = 0;
        for (let at = text.indexOf("\n", block); at >= 0 && at < begin; at = text.indexOf("\n", at + 1)) ++line;
        return line;
    }

    // Words of descriptions and options

    /** The lines in which words stand that begin with a token; null when none do. */
    async linesOfWord(token) {
        const first = await load("words", 0);
        const firsts = first.trim() ? first.trim().split("\n") : [];
        const lines = new Map();
        for (let at = Math.max(0, lastNotAbove(firsts, token)); at < firsts.length && (firsts[at] <= token || firsts[at].startsWith(token)); ++at) {
            const text = await load("words", at + 1);
            if (this.isOver) return null;
            for (let found = text.indexOf("\n" + token); found >= 0; found = text.indexOf("\n" + token, found + 1)) {
                const tab = text.indexOf("\t", found);
                const isWhole = tab - found - 1 === token.length;
                let line = 0;
                for (const step of text.slice(tab + 1, text.indexOf("\n", tab)).split(" ")) {
                    line += parseInt(step, 36);
                    if (isWhole || !lines.has(line)) lines.set(line, isWhole);
                }
                if (lines.size > 200000) break;
            }
        }
        return lines.size ? lines : null;
    }

    async findWords() {
        const words = this.tokens.flatMap(token => token.split(/[^\p{L}\p{N}]+/u)).filter(word => word.length >= 2);
        if (!words.length) return;
        const found = [];
        for (const word of words) {
            const lines = await this.linesOfWord(word);
            if (this.isOver) return;
            found.push({word, lines: lines || new Map()});
        }
        // A word may stand in the description or in the path; the rarest one that descriptions have leads.
        const leading = found.filter(({lines}) => lines.size).sort((a, b) => a.lines.size - b.lines.size);
        for (const first of leading) {
            if (await this.addLines(first.lines, found.filter(it => it !== first), words)) return;
        }
    }

    /** Adds lines of which the other words are in the description or in the path; true when some are, or it is over. */
    async addLines(lines, others, words) {
        const inLine = line => others.filter(({lines}) => lines.has(line)).length;
        const sorted = [...lines].map(([line, isWhole]) => [line, isWhole, inLine(line)])
            .sort((a, b) => b[2] - a[2] || b[1] - a[1] || a[0] - b[0]);
        let shown = 0, tried = 0;
        for (const [line, isWhole] of sorted) {
            if (shown >= MOST_HITS || ++tried > MOST_LINES) { this.more = true; break; }
            const inPath = others.filter(({lines}) => !lines.has(line)).map(({word}) => word);
            if (await this.addLine(line, isWhole ? 2.5 : 3.5, words, inPath)) ++shown;
            if (await this.pause()) return true;
        }
        return shown > 0;
    }

    /** Adds what a line describes; false when other words of the search are not in its path. */
    async addLine(line, score, words, others) {
        const piece = await load("names", lastNotAbove(main.names, line, entry => entry[1]));
        piece.lines ??= linesOfBlocks(piece);
        const block = lastNotAbove(piece.lines, line);
        const type = piece.firstType + block;
        const node = parseType(piece, type)[line - piece.lines[block]];
        if (!node) return false;
        const isRoot = node === parseType(piece, type)[0];
        const place = instance => hitOf(type, instance, isRoot ? null : node).path.toLowerCase();
        const places = placesOf(type).filter(instance => !others.length || others.every(word => place(instance).includes(word)));
        if (!places.length) return false;
        const number = lastNotAbove(main.texts, line);
        const texts = (await load("texts", number))[line - main.texts[number]].split("\t");
        const wanted = words.filter(word => !others.includes(word));
        const at = Math.max(0, texts.findIndex(text => wanted.some(word => text.toLowerCase().includes(word))));
        if (places.length > 3) this.more = true;
        for (const instance of places.slice(0, 3))
            this.add({...hitOf(type, instance, isRoot ? null : node, at ? node.fields[at - 1] : null, this.indices), says: texts[at]}, score);
        return true;
    }
}

/** The line with which each type of a piece begins. */
function linesOfBlocks(piece) {
    const lines = [];
    let line = piece.firstLine, at = 0;
    for (const block of piece.blocks) {
        for (let next = piece.text.indexOf("\n", at + 1); next >= 0 && next < block; next = piece.text.indexOf("\n", next + 1)) ++line, at = next;
        lines.push(line);
    }
    return lines;
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
    open(true);
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
    search = new Search(input.value, (it, isDone) => { if (it === search) show(it.best(), isDone); });
    search.run().catch(error => { count.textContent = String(error.message); open(true); });
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
    load("main", 0).then(() => load("names", 0)).catch(() => {});
    if (input.value.trim() && panel.hidden) start();
});
input.addEventListener("keydown", event => {
    const step = {ArrowDown: 1, ArrowUp: -1, PageDown: 8, PageUp: -8}[event.key];
    if (step && !panel.hidden) {
        select(Math.max(0, Math.min(list.children.length - 1, selected + step)));
    } else if (event.key === "Enter") {
        follow(list.children[selected]);
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
