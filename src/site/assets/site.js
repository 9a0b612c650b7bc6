// What a page of the reference manual can do beyond being read: links to members of arrays, the mark in the table beside
// the text, copies of names, and the decoder. All of it reads the page itself; text is only ever inserted as text.
"use strict";

(() => {

const LETTERS = "nmklpqrstuvwxyz";      // of indices, from the outermost in
const chapter = document.querySelector("main.chapter");

/** An element with properties, attributes (those with "-" in their name, role and class) and children. */
function make(tag, settings = {}, ...children) {
    const element = document.createElement(tag);
    for (const [name, value] of Object.entries(settings)) {
        if (name.includes("-") || name === "role" || name === "for") element.setAttribute(name, value);
        else element[name] = value;
    }
    element.append(...children);
    return element;
}

const hex = (value, digits = 1) => "0x" + (value >>> 0).toString(16).toUpperCase().padStart(digits, "0");
const fragmentOf = id => encodeURIComponent(id).replace(/%5B/g, "[").replace(/%5D/g, "]").replace(/%24/g, "$");

/** A number as people write them: 0x1F, 1Fh, 0b101, 12, with _ or blanks between digits; NaN for anything else. */
function numberOf(text) {
    const plain = text.trim().replace(/[_\s']/g, "");
    if (/^0x[0-9a-f]{1,16}$/i.test(plain)) return parseInt(plain.slice(2), 16);
    if (/^[0-9][0-9a-f]*h$/i.test(plain)) return parseInt(plain, 16);
    if (/^0b[01]{1,64}$/i.test(plain)) return parseInt(plain.slice(2), 2);
    return /^[0-9]{1,15}$/.test(plain) ? Number(plain) : NaN;
}

// Messages that last a moment ---------------------------------------------------------------------------------------------

const status = make("div", {className: "hidden", role: "status"});
let statusTimer;

function say(text) {
    status.textContent = text;
    status.className = "said";
    clearTimeout(statusTimer);
    statusTimer = setTimeout(() => { status.className = "hidden"; status.textContent = ""; }, 1600);
}

async function copy(text) {
    try {
        await navigator.clipboard.writeText(text);
    } catch {
        const area = make("textarea", {value: text, className: "hidden", "aria-label": "copied text"});
        document.body.append(area);
        area.select();
        document.execCommand("copy");
        area.remove();
    }
    say("Copied " + (text.length > 60 ? text.slice(0, 59) + "…" : text));
}

// Arrays: which member a section shows ------------------------------------------------------------------------------------

/** The arrays around an element, outermost first: [{letter, count, stride, key}]; key is the id up to the index. */
function repetitionsOf(section) {
    let at = 0;
    return (section.dataset.repeat || "").split(" ").filter(Boolean).map(part => {
        const [letter, count, stride] = part.split(":");
        at = section.id.indexOf("[" + letter + "]", at) + 3;
        return {letter, count: Number(count), stride: Number(stride), key: section.id.slice(0, at)};
    });
}

const chosen = new Map();               // index by key

/** A text with the places of letters, "[n]" or "{n}", filled as far as members are chosen. */
function withIndices(text, repetitions, open = "[", close = "]") {
    for (const {letter, key} of repetitions) {
        if (chosen.has(key)) text = text.replace(open + letter + close, open === "{" ? chosen.get(key) : "[" + chosen.get(key) + "]");
    }
    return text;
}

function addressOf(section, repetitions = repetitionsOf(section)) {
    let address = Number(chapter.dataset.base || 0) + Number(section.dataset.offset);
    for (const {stride, key} of repetitions) address += stride * (chosen.get(key) || 0);
    return address >>> 0;
}

const isChosen = repetitions => repetitions.every(({key}) => chosen.has(key));

function showMember(section) {
    const repetitions = repetitionsOf(section);
    const heading = section.querySelector("h2, h3, h4, h5, h6").querySelector("a");
    heading.dataset.name ??= heading.textContent;
    heading.textContent = withIndices(heading.dataset.name, repetitions);
    const place = section.querySelector(".place");
    place.dataset.formula ??= place.textContent;
    const isFormula = !isChosen(repetitions) || chapter.dataset.base === undefined;
    place.textContent = isFormula ? place.dataset.formula : hex(addressOf(section, repetitions), 8);
    for (const input of section.querySelectorAll(":scope > .array .index")) input.value = chosen.get(input.dataset.key) ?? "";
    const decoder = section.querySelector(".decoder");
    if (decoder) decoder.refresh();
}

function choose(key, index) {
    if (index === undefined) chosen.delete(key);
    else chosen.set(key, index);
    for (const section of document.querySelectorAll("section[data-repeat]")) {
        if (section.id.startsWith(key)) showMember(section);
    }
}

function addIndexInputs() {
    for (const section of chapter.querySelectorAll("section[data-repeat]")) {
        const array = section.querySelector(":scope > .array");
        if (!array) continue;
        for (const variable of array.querySelectorAll("var")) {
            const {letter, count, key} = repetitionsOf(section).find(repetition => repetition.letter === variable.textContent);
            const input = make("input", {className: "index", type: "number", min: 0, max: count - 1, placeholder: letter + " = all",
                                         "aria-label": `Index ${letter} of ${section.id}`});
            input.dataset.key = key;
            input.addEventListener("change", () => {
                const index = input.value === "" ? undefined : Math.min(Math.max(Math.floor(input.valueAsNumber), 0), count - 1);
                choose(key, index);
                const id = withIndices(section.id, repetitionsOf(section));
                history.replaceState(null, "", "#" + fragmentOf(id));
            });
            array.append(" ", input);
        }
    }
}

// Where a link leads -------------------------------------------------------------------------------------------------------

/** What "#chan[2].enable=0x5" means: {element, id, members: [[key, index]], value}; element null when nothing does. */
function resolve(hash) {
    let id = hash.replace(/^#/, "");
    try { id = decodeURIComponent(id); } catch { /* it stands as it is */ }
    let value = NaN;
    const sign = id.lastIndexOf("=");
    if (sign > 0 && !document.getElementById(id)) {
        value = numberOf(id.slice(sign + 1));
        id = id.slice(0, sign);
    }
    const members = [];
    let depth = 0;
    let key = "";
    const general = id.replace(/([^[]*)\[(\w+)\]/g, (all, before, index) => {
        const letter = LETTERS[depth++];
        key += before + "[" + letter + "]";
        if (/^\d+$/.test(index)) members.push([key, Number(index)]);
        return before + "[" + letter + "]";
    });
    let element = document.getElementById(general);
    if (!element) return {element: document.getElementById(id), id, members: [], value};
    const repetitions = repetitionsOf(element.closest("section") || element);
    const isThere = members.every(([name, index]) => index < (repetitions.find(({key}) => key === name) || {count: 0}).count);
    if (!isThere) element = document.getElementById(id);
    return {element, id, members: isThere ? members : [], value};
}

let target = null;

function mark(element) {
    if (target) target.classList.remove("target");
    target = element;
    if (target) target.classList.add("target");
}

let showPlace = () => {};               // marks the section that is read in the table of contents
let isSettling = false;                 // scrolled to where a link led, not by the reader
let settled;

function settle() {
    isSettling = true;
    clearTimeout(settled);
    settled = setTimeout(() => { isSettling = false; }, 400);
}

function arrive() {
    if (!location.hash) return mark(null);
    const {element, members, value} = resolve(location.hash);
    for (const [key, index] of members) choose(key, index);
    mark(element);
    if (!element) return;
    const section = element.closest("section");
    if (!Number.isNaN(value) && section && section.dataset.bits) openDecoder(section, value);
    settle();
    element.scrollIntoView({block: element.tagName === "TR" ? "center" : "start"});
    showPlace();
}

/** Links to members of arrays lead to the one that is shown. */
function followLink(event) {
    const link = event.target.closest("a[href^='#']");
    if (!link || event.defaultPrevented || event.button || event.ctrlKey || event.metaKey || event.shiftKey) return;
    const section = link.closest("section[data-repeat]");
    settle();
    if (!section || link.closest(".members")) return;
    const general = decodeURIComponent(link.getAttribute("href").slice(1));
    const id = withIndices(general, repetitionsOf(section));
    if (id === general) return;
    event.preventDefault();
    location.hash = "#" + fragmentOf(id);
}

// The mark in the table beside the text ------------------------------------------------------------------------------------

function followReader() {
    const sections = [...chapter.querySelectorAll("section[id]")];
    const rows = new Map();
    for (const link of chapter.querySelectorAll(".contents a")) {
        rows.set(decodeURIComponent(link.getAttribute("href").slice(1)), link.closest("tr"));
    }
    const contents = chapter.querySelector(".contents");
    let here = null;

    /** The last section that begins above a line near the top; by bisection, since pages can have thousands. */
    function sectionAt(line) {
        let low = 0, high = sections.length;
        while (low < high) {
            const middle = (low + high) >> 1;
            if (sections[middle].getBoundingClientRect().top <= line) low = middle + 1;
            else high = middle;
        }
        return low ? sections[low - 1] : null;
    }

    function update() {
        // What a link led to near the end of a page does not come up to the top.
        const section = isSettling && target ? target.closest("section") :
            sectionAt(parseFloat(getComputedStyle(document.documentElement).scrollPaddingTop) + 24);
        const row = section && rows.get(section.id);
        if (row !== here) {
            if (here) { here.classList.remove("here"); here.querySelector("a").removeAttribute("aria-current"); }
            here = row;
            if (here) { here.classList.add("here"); here.querySelector("a").setAttribute("aria-current", "location"); }
            if (here && getComputedStyle(contents).position === "sticky") {
                const box = here.getBoundingClientRect(), frame = contents.getBoundingClientRect();
                if (box.top < frame.top + 40 || box.bottom > frame.bottom) contents.scrollTop += box.top - frame.top - frame.height / 3;
            }
        }
        return section;
    }

    function followAddress() {
        const section = update();
        if (isSettling) return;
        const {element} = location.hash ? resolve(location.hash) : {element: null};
        if (section === (element && element.closest("section"))) return;
        if (element && element.tagName !== "SECTION" && isSeen(element)) return;
        const id = section ? withIndices(section.id, repetitionsOf(section)) : "";
        history.replaceState(null, "", id ? "#" + fragmentOf(id) : location.href.split("#")[0]);
    }
    const isSeen = element => {
        const box = element.getBoundingClientRect();
        return box.bottom > 0 && box.top < innerHeight;
    };

    let waiting = false, idle;
    addEventListener("scroll", () => {
        clearTimeout(idle);
        idle = setTimeout(followAddress, 250);
        if (waiting) return;
        waiting = true;
        requestAnimationFrame(() => { waiting = false; update(); });
    }, {passive: true});
    showPlace = update;
    update();
}

// Copies -------------------------------------------------------------------------------------------------------------------

const nameOf = section => section.querySelector("h2, h3, h4, h5, h6").querySelector("a").textContent;

/** The names of a section or of a field in it: [[what, text]]. */
function namesOf(section, row) {
    const names = [];
    const add = (what, text) => { if (text) names.push([what, text]); };
    const repetitions = repetitionsOf(section);
    const path = withIndices(section.dataset.path || nameOf(section), repetitions);
    const field = row && row.querySelector("th a").textContent;
    const id = withIndices(row ? row.id : section.id, repetitions);
    if (chapter.dataset.base !== undefined) {
        add("path", "$" + chapter.dataset.name + "." + path + (row ? "." + field : ""));
        add("address", isChosen(repetitions) ? hex(addressOf(section, repetitions), 8) : section.querySelector(".place").textContent);
    } else {
        add("offset", section.querySelector(".place").textContent.slice(1));
    }
    if (row) {
        add("C", row.dataset.macro);
        add("C mask", row.dataset.mask);
        add("C shift", row.dataset.shift);
        for (const option of row.querySelectorAll(".options li")) add("C option", option.dataset.macro);
    } else if (chapter.dataset.pointer) {
        add("C", chapter.dataset.pointer + "->" + path);
    }
    if (section.dataset.asm) add("assembly", withIndices(section.dataset.asm, repetitions, "{", "}"));
    add("link", location.href.split("#")[0] + "#" + fragmentOf(id));
    return names;
}

function namesOfChapter() {
    const {name, base, pointer, macro, asm} = chapter.dataset;
    const names = base === undefined ? [["name", name]] : [["path", "$" + name], ["address", hex(Number(base), 8)]];
    if (pointer) names.push(["C", pointer], ["C", macro]);
    if (asm !== undefined) names.push(["assembly", macro + "_HI"], ["assembly", macro + "_LO"]);
    return [...names, ["link", location.href.split("#")[0]]];
}

let menu = null;                        // {button, box} of the copies that are shown

function closeMenu(back) {
    if (!menu) return;
    menu.box.remove();
    menu.button.setAttribute("aria-expanded", "false");
    if (back) menu.button.focus();
    menu = null;
}

function openMenu(button, names) {
    const again = menu && menu.button === button;
    closeMenu();
    if (again) return;
    const box = make("div", {className: "copies", role: "group", "aria-label": button.getAttribute("aria-label")});
    for (const [what, text] of names) {
        box.append(make("button", {type: "button", onclick: () => { copy(text); closeMenu(true); }},
                        make("span", {}, what), make("code", {}, text)));
    }
    button.after(box);
    button.setAttribute("aria-expanded", "true");
    const over = box.getBoundingClientRect().right - document.documentElement.clientWidth + 14;
    if (over > 0) box.style.marginLeft = -over + "px";
    menu = {button, box};
}

function copyButton(what, names) {
    const button = make("button", {type: "button", className: "tool", "aria-label": "Copy names of " + what, "aria-expanded": "false"}, "copy");
    button.addEventListener("click", () => openMenu(button, names()));
    return button;
}

function addTools() {
    if (chapter) {
        const title = chapter.querySelector("h1");
        title.classList.add("tooled");
        title.after(make("span", {className: "tools"}, copyButton(title.textContent, namesOfChapter)));
        for (const section of chapter.querySelectorAll("section[data-offset]")) addSectionTools(section);
    }
    for (const heading of document.querySelectorAll(".constants > h2:has(a)")) {
        heading.classList.add("tooled");
        heading.after(make("span", {className: "tools"}, copyButton(heading.textContent, () => constantNames(heading.parentElement.id, heading.textContent))));
    }
    for (const row of document.querySelectorAll(".values tr[id]")) {
        const name = row.querySelector("th a").textContent;
        row.querySelector("th").append(" ", copyButton(name, () => constantNames(row.id, name)));
    }
}

function constantNames(id, name) {
    return [["name", name], ["C", name.toUpperCase()], ["link", location.href.split("#")[0] + "#" + fragmentOf(id)]];
}

function addSectionTools(section) {
    const heading = section.querySelector("h2, h3, h4, h5, h6");
    heading.classList.add("tooled");
    const tools = make("span", {className: "tools"}, copyButton(section.id, () => namesOf(section)));
    if (section.dataset.bits) {
        const button = make("button", {type: "button", className: "tool decode", "aria-expanded": "false", "aria-label": "Decode a value of " + section.id}, "decode");
        button.addEventListener("click", () => toggleDecoder(section));
        tools.append(button);
    }
    heading.after(tools);
    for (const row of section.querySelectorAll(".fields tr[id]")) {
        row.querySelector("th").append(" ", copyButton(row.id, () => namesOf(section, row)));
    }
}

// The decoder --------------------------------------------------------------------------------------------------------------

const maskOf = bits => bits >= 32 ? 0xFFFFFFFF : (1 << Math.max(bits, 0)) - 1 >>> 0;

/** The fields of a section, as the page says them. */
function fieldsOf(section) {
    const bits = Number(section.dataset.bits);
    return [...section.querySelectorAll(".fields tr[id]")].map(row => {
        const down = Number(row.dataset.down), up = Math.min(Number(row.dataset.up), bits - 1);
        const mask = down < 0 || up < down ? 0 : maskOf(up - down + 1);
        const options = [...row.querySelectorAll(".options li")].map(item => ({
            value: Number(item.dataset.value) & mask, text: item.dataset.value, name: item.querySelector("b").textContent, macro: item.dataset.macro}));
        return {name: row.querySelector("th a").textContent, down, up, mask, options, macro: row.dataset.macro};
    });
}

const valueOf = (field, word) => field.mask ? (word >>> field.down & field.mask) >>> 0 : 0;
const inPlace = (field, value) => field.mask ? (value << field.down) >>> 0 : 0;

/** A C expression with the value of the word, in macros of the header as far as they go. */
function expressionOf(fields, word) {
    let made = 0;
    const terms = [];
    for (const field of fields) {
        const bits = inPlace(field, field.mask);
        if (!bits || (bits & made)) continue;       // overlaps are said once
        const value = valueOf(field, word);
        const option = field.options.find(option => option.value === value && option.macro && Number(option.text) <= field.mask);
        const hasParameter = field.macro && field.macro.endsWith("(n)");
        if (option) terms.push(option.macro);
        else if (!value) continue;
        else if (hasParameter) terms.push(field.macro.slice(0, -2) + (value > 9 ? hex(value) : value) + ")");
        else if (field.macro) terms.push(field.macro);
        else continue;
        made = (made | bits) >>> 0;
    }
    const rest = (word & ~made) >>> 0;
    if (rest || !terms.length) terms.push(hex(rest));
    return terms.join(" | ");
}

function toggleDecoder(section) {
    const decoder = section.querySelector(".decoder");
    if (!decoder) return openDecoder(section);
    decoder.remove();
    section.querySelector(".decode").setAttribute("aria-expanded", "false");
}

function resetOf(section) {
    const reset = section.querySelector(":scope > .facts span > code");
    return reset ? parseInt(reset.textContent.replace(/x/g, (x, at) => at === 1 ? "x" : "0"), 16) : 0;
}

function openDecoder(section, given) {
    const old = section.querySelector(".decoder");
    if (old) return old.show(given ?? 0);
    section.querySelector(".decode").setAttribute("aria-expanded", "true");
    const bits = Number(section.dataset.bits);
    const fields = fieldsOf(section);
    let word = (given ?? resetOf(section)) & maskOf(bits);

    const formats = [["Hexadecimal", "hexadecimal", value => hex(value, bits / 4)], ["Decimal", "decimal", value => String(value >>> 0)],
                     ["Binary", "binary", value => "0b" + (value >>> 0).toString(2).padStart(bits, "0")]];
    const inputs = formats.map(([label, className, format]) => {
        const input = make("input", {className, type: "text", spellcheck: false, autocomplete: "off", "aria-label": `${label} value of ${section.id}`});
        input.addEventListener("input", () => {
            const number = numberOf(className === "binary" && /^[01_\s]+$/.test(input.value) ? "0b" + input.value : input.value);
            const isValid = number <= maskOf(bits);
            input.setAttribute("aria-invalid", String(!isValid));
            if (isValid) show(number, input);
        });
        return {input, format, label};
    });
    const buttons = Array.from({length: bits}, (_, at) => {
        const bit = bits - 1 - at;
        const field = fields.find(({down, up}) => down <= bit && bit <= up);
        const digit = make("span");
        const button = make("button", {type: "button", title: field ? field.name : ""}, make("span", {className: "hidden"}, "Bit "),
                            make("small", {}, String(bit)), make("span", {className: "hidden"}, (field ? ", " + field.name : "") + ": "), digit);
        button.addEventListener("click", () => show(word ^ 1 << bit));
        return {button, digit, bit};
    });
    const rows = fields.map(field => {
        const means = make("td");
        const input = make("input", {type: "text", spellcheck: false, autocomplete: "off", size: 11, "aria-label": "Value of " + field.name});
        const take = text => {
            const option = field.options.find(option => option.name.toLowerCase() === text.trim().toLowerCase());
            const number = option ? option.value : numberOf(text);
            const isValid = number <= field.mask;
            input.setAttribute("aria-invalid", String(!isValid));
            if (isValid) show(word & ~inPlace(field, field.mask) | inPlace(field, number), input);
        };
        input.addEventListener("input", () => take(input.value));
        let select = null;
        if (field.options.length) {
            select = make("select", {"aria-label": "Option of " + field.name}, make("option", {value: ""}, "—"),
                          ...field.options.map(option => make("option", {value: option.text}, option.name)));
            select.addEventListener("change", () => { if (select.value) take(String(Number(select.value) & field.mask)); });
            means.append(select);
        }
        const position = field.up === field.down ? String(field.down) : field.up + ":" + field.down;
        const row = make("tr", {}, make("th", {scope: "row"}, field.name), make("td", {}, position), make("td", {}, input), means);
        return {field, input, select, row};
    });
    const expression = make("code", {className: "expression"});
    const link = () => location.href.split("#")[0] + "#" + fragmentOf(withIndices(section.id, repetitionsOf(section))) + "=" + hex(word, bits / 4);

    function show(value, source) {
        word = value >>> 0;
        for (const {input, format} of inputs) {
            if (input === source) continue;
            input.value = format(word);
            input.removeAttribute("aria-invalid");
        }
        for (const {button, digit, bit} of buttons) {
            digit.textContent = word >>> bit & 1;
            button.setAttribute("aria-pressed", String(Boolean(word >>> bit & 1)));
        }
        for (const {field, input, select} of rows) {
            const part = valueOf(field, word);
            if (input !== source) {
                input.value = part > 9 ? hex(part) : String(part);
                input.removeAttribute("aria-invalid");
            }
            const option = field.options.find(option => option.value === part);
            if (select) select.value = option ? option.text : "";
        }
        refresh();
        history.replaceState(null, "", link());
    }
    function refresh() {
        const side = chapter.dataset.pointer && isChosen(repetitionsOf(section)) ? chapter.dataset.pointer + "->" + nameOf(section) + " = " : "";
        expression.textContent = side + expressionOf(fields, word) + (side ? ";" : "");
    }

    const decoder = make("div", {className: "decoder", role: "group", "aria-label": "Decoder of " + section.id},
        make("div", {className: "values"}, ...inputs.map(({input, label}) => make("label", {}, label + " ", input))),
        make("div", {className: "word"}, ...buttons.map(({button}) => button)));
    if (rows.length) {
        const head = make("tr", {}, ...["Field", "Bits", "Value", "Option"].map(text => make("th", {scope: "col"}, text)));
        decoder.append(make("div", {className: "wide"}, make("table", {}, make("thead", {}, head), make("tbody", {}, ...rows.map(({row}) => row)))));
    }
    decoder.append(expression, make("div", {className: "tools"},
        make("button", {type: "button", className: "tool", onclick: () => copy(expression.textContent)}, "copy expression"),
        make("button", {type: "button", className: "tool", onclick: () => copy(link())}, "copy link"),
        make("button", {type: "button", className: "tool", onclick: () => show(resetOf(section))}, "reset value"),
        make("button", {type: "button", className: "tool", onclick: () => { toggleDecoder(section); section.querySelector(".decode").focus(); }}, "close")));
    decoder.show = value => show(value & maskOf(bits));
    decoder.refresh = refresh;
    const before = section.querySelector(".wide") || section.querySelector(".members") || section.querySelector(".array") ||
        section.querySelector(".text") || section.querySelector(".facts");
    before.after(decoder);
    show(word);
    if (given === undefined) inputs[0].input.select();
}

// Begin --------------------------------------------------------------------------------------------------------------------

document.body.append(status);
addTools();
if (chapter) {
    addIndexInputs();
    followReader();
    document.addEventListener("click", followLink);
}
document.addEventListener("click", event => {
    if (menu && !menu.box.contains(event.target) && event.target !== menu.button) closeMenu();
});
document.addEventListener("keydown", event => {
    if (event.key === "Escape") closeMenu(true);
});
addEventListener("hashchange", arrive);
if (location.hash) {
    arrive();
    // The browser scrolls by itself when all is there, to what it knows under the name.
    addEventListener("load", () => setTimeout(arrive), {once: true});
}

})();
