// The tree of a documentation site.
//
// menu.js, which is generated, calls gFld and gLnk for its nodes and insFld and insDoc to hang them below others, and
// sets iconSrc and iconSrcClosed on them. initializeDocument() then shows them. A site may have a hundred thousand
// nodes, so only those rows are elements that can be seen: all rows have one height, and stand on a sheet that is as
// high as all of them together. Names are as the description has them: they are only ever inserted as text.

// What menu.js sets.
var USETEXTLINKS = 1;   // 0: the picture of a node is its link, its name is not
var STARTALLOPEN = 0;   // 1: all folders are open at first
var foldersTree = null; // the topmost node

(function () {
    'use strict';

    const OPEN_FOLDER = 'ftv2folderopen.gif';
    const CLOSED_FOLDER = 'ftv2folderclosed.gif';
    const MODULE = 'module.png';
    const SEPARATOR = ' › ';
    const MOST_KEPT = 20000; // folders whose state is kept on reload

    // The nodes ------------------------------------------------------------------------------------------------------

    const allNodes = []; // as the description has them: a node before its children

    class TreeNode {
        constructor(title, link, isFolder) {
            this.title = String(title);
            this.link = String(link);
            this.isFolder = isFolder;
            this.iconSrc = '';
            this.iconSrcClosed = '';
            this.parent = null;
            this.children = [];
            this.level = 0;
            this.place = 0;   // among its siblings
            this.number = 0;  // in allNodes
            this.isOpen = false;
        }

        get canOpen() { return this.children.length > 0; }

        get isLast() { return !this.parent || this.place === this.parent.children.length - 1; }

        /// From the node below the topmost one to this.
        get line() {
            const nodes = [];
            for (let node = this; node.parent; node = node.parent)
                nodes.unshift(node);
            return nodes;
        }

        get path() { return this.line.map(function (node) { return node.title; }); }

        get picture() {
            const own = this.isFolder && !(this.isOpen && this.canOpen) ? this.iconSrcClosed : this.iconSrc;
            if (own || !this.isFolder)
                return own;
            if (this.level < 2)
                return MODULE;
            return this.isOpen ? OPEN_FOLDER : CLOSED_FOLDER;
        }

        /// 8 hexadecimal digits, which every anchor begins with; empty for a page. A field has its register's.
        get address() {
            const anchor = this.link.slice(this.link.lastIndexOf('#') + 1);
            return /^[0-9A-F]{8}/.test(anchor) ? anchor.slice(0, 8) : '';
        }
    }

    function insert(parent, node) {
        node.parent = parent;
        node.level = parent.level + 1;
        node.place = parent.children.length;
        node.number = allNodes.length;
        parent.children.push(node);
        allNodes.push(node);
        return node;
    }

    window.gFld = function (title, link) { return new TreeNode(title, link, true); };
    window.gLnk = function (target, title, link) { return new TreeNode(title, link, false); };
    window.insFld = insert;
    window.insDoc = insert;

    // Pictures -------------------------------------------------------------------------------------------------------

    const missingPictures = new Set();

    /// An element with the picture of a file; with the spare text where that is missing.
    function picture(file, kind, spare) {
        if (!file || missingPictures.has(file)) {
            const text = document.createElement('span');
            text.className = kind + ' spare';
            text.setAttribute('aria-hidden', 'true');
            text.textContent = spare;
            return text;
        }
        const image = document.createElement('img');
        image.className = kind;
        image.alt = '';
        image.draggable = false;
        image.src = encodeURIComponent(file);
        image.addEventListener('error', function () {
            missingPictures.add(file);
            image.replaceWith(picture(file, kind, spare));
        });
        return image;
    }

    /// The lines that lead to a node, with its handle at their end.
    function guides(node) {
        const parts = [];
        for (const ancestor of node.line.slice(0, -1))
            parts.push(picture(ancestor.isLast ? 'ftv2blank.gif' : 'ftv2vertline.gif', 'guide', ''));
        if (node.parent) {
            const handle = !node.canOpen ? '' : node.isOpen ? 'm' : 'p';
            const kind = handle ? 'guide handle' : 'guide';
            const spare = { '': '', m: '−', p: '+' }[handle];
            parts.push(picture('ftv2' + handle + (node.isLast ? 'lastnode.gif' : 'node.gif'), kind, spare));
        }
        return parts;
    }

    function linkTo(node, ...content) {
        const link = document.createElement('a');
        link.href = siteBrowser.addressOf(node.link);
        link.target = siteBrowser.PAGE_FRAME;
        link.tabIndex = -1; // the list as a whole has the focus
        link.draggable = false;
        link.append(...content);
        return link;
    }

    function span(kind, ...content) {
        const element = document.createElement('span');
        element.className = kind;
        element.append(...content);
        return element;
    }

    // Long lists -----------------------------------------------------------------------------------------------------

    /// Rows of one height in a box that scrolls. make(item, index) gives the element of a row, dress(element, item)
    /// brings it up to date. One row can be active: it is an element also when it can't be seen, so that it can be
    /// named to screen readers.
    class LongList {
        constructor(box, make, dress) {
            this.box = box;
            this.sheet = box.firstElementChild;
            this.make = make;
            this.dress = dress;
            this.items = [];
            this.rows = new Map(); // item to element
            this.active = -1;
            this.rowHeight = 0;
            this.isAsked = false;
            box.addEventListener('scroll', () => this.ask(), { passive: true });
            new ResizeObserver(() => this.ask()).observe(box);
        }

        /// Other items; rows of items that stay are kept.
        setItems(items, active) {
            this.items = items;
            this.active = active;
            this.rowHeight = parseFloat(getComputedStyle(this.box).getPropertyValue('--row')) || 22;
            this.sheet.style.height = items.length * this.rowHeight + 'px';
            this.paint();
        }

        /// Paints with the next picture of the screen.
        ask() {
            if (this.isAsked)
                return;
            this.isAsked = true;
            requestAnimationFrame(() => {
                this.isAsked = false;
                this.paint();
            });
        }

        paint() {
            if (this.box.hidden || !this.rowHeight)
                return;
            const first = Math.max(0, Math.floor(this.box.scrollTop / this.rowHeight) - 3);
            const last = Math.min(this.items.length, first + Math.ceil(this.box.clientHeight / this.rowHeight) + 7);
            const indexes = [];
            for (let index = first; index < last; ++index)
                indexes.push(index);
            if (this.active >= 0 && this.active < first)
                indexes.unshift(this.active);
            else if (this.active >= last)
                indexes.push(this.active);

            const rows = new Map();
            for (const index of indexes) {
                const item = this.items[index];
                const row = this.rows.get(item) || this.make(item);
                row.style.top = index * this.rowHeight + 'px';
                row.classList.toggle('active', index === this.active);
                this.dress(row, item, index);
                rows.set(item, row);
            }
            for (const [item, row] of this.rows) {
                if (!rows.has(item))
                    row.remove();
            }
            let next = this.sheet.firstElementChild; // rows stand in their order, for those who hear them
            for (const row of rows.values()) {
                if (row === next)
                    next = next.nextElementSibling;
                else
                    this.sheet.insertBefore(row, next);
            }
            this.rows = rows;
        }

        get rowsPerPage() { return Math.max(1, Math.floor(this.box.clientHeight / this.rowHeight) - 1); }

        get activeItem() { return this.items[this.active] || null; }

        /// Makes a row active and scrolls as little as shows it.
        activate(index) {
            this.active = Math.max(0, Math.min(index, this.items.length - 1));
            const top = this.active * this.rowHeight;
            if (top < this.box.scrollTop)
                this.box.scrollTop = top;
            else if (top + this.rowHeight > this.box.scrollTop + this.box.clientHeight)
                this.box.scrollTop = top + this.rowHeight - this.box.clientHeight;
            this.paint();
        }

        /// The item of the row that an event is about, or null.
        itemOf(event) {
            const row = event.target.closest('.row');
            for (const [item, element] of this.rows) {
                if (element === row)
                    return item;
            }
            return null;
        }

        linkOfActive() {
            const row = this.rows.get(this.activeItem);
            return row ? row.querySelector('a') : null;
        }
    }

    // The search -----------------------------------------------------------------------------------------------------

    let lowerNames = null;

    /// The nodes that a text asks for, the best first: an equal name, a name that begins with it, one that holds it.
    /// "uart ctrl" or "uart.ctrl" is a ctrl below a uart; 0x4000 is what lies at addresses that begin so.
    function search(text) {
        const asked = text.trim().toLowerCase();
        const words = asked.split(/[\s.›]+/).filter(Boolean);
        const address = /^0x[0-9a-f]{1,8}$/.test(asked) ? asked.slice(2).toUpperCase() : null;
        if (words.length === 0)
            return [];
        lowerNames = lowerNames || allNodes.map(function (node) { return node.title.toLowerCase(); });
        const name = words[words.length - 1];
        const equal = [], begins = [], holds = [];
        for (let index = 0; index < allNodes.length; ++index) {
            const found = lowerNames[index].indexOf(name);
            const node = allNodes[index];
            if (found >= 0 && (words.length === 1 || liesBelow(node, words, lowerNames) || lowerNames[index].includes(asked)))
                (found > 0 ? holds : lowerNames[index].length === name.length ? equal : begins).push(node);
            else if (address && node.address.startsWith(address) && node.picture !== 'bitfield.png')
                equal.push(node);
        }
        return equal.concat(begins, holds);
    }

    /// Whether all words but the last are in names above a node, in their order.
    function liesBelow(node, words, names) {
        let left = words.length - 1;
        for (let above = node.parent; left > 0 && above && above.parent; above = above.parent) {
            if (names[above.number].includes(words[left - 1]))
                --left;
        }
        return left === 0;
    }

    /// A name with what was asked for marked in it.
    function marked(title, text) {
        const word = text.trim().toLowerCase().split(/[\s.›]+/).filter(Boolean).pop() || '';
        const at = title.toLowerCase().indexOf(word);
        if (!word || at < 0)
            return [title];
        const mark = document.createElement('mark');
        mark.textContent = title.slice(at, at + word.length);
        return [title.slice(0, at), mark, title.slice(at + word.length)];
    }

    // The menu -------------------------------------------------------------------------------------------------------

    let box, count, tree, hits;
    let current = null;  // the node whose page is shown
    let treeScroll = 0;  // of the tree, while hits are shown in its place
    let currentBeforeSearch = null;
    let byLink = null;   // links to nodes, made when first needed

    function makeTreeRow(node) {
        const row = document.createElement('div');
        row.className = 'row';
        row.id = 'node' + node.number;
        row.setAttribute('role', 'treeitem');
        row.setAttribute('aria-level', node.level + 1);
        row.setAttribute('aria-posinset', node.place + 1);
        row.setAttribute('aria-setsize', node.parent ? node.parent.children.length : 1);
        row.title = node.path.join(SEPARATOR) || node.title;
        return row;
    }

    function dressTreeRow(row, node) {
        row.setAttribute('aria-selected', node === current);
        if (row.isOpen === node.isOpen && row.firstChild)
            return;
        row.isOpen = node.isOpen;
        if (node.canOpen)
            row.setAttribute('aria-expanded', node.isOpen);
        const icon = picture(node.picture, 'icon', node.isFolder ? '▸' : '·');
        const name = span('name', node.title);
        row.style.minWidth = 'calc(' + node.level + ' * var(--step) + 8em)';
        row.replaceChildren(...guides(node), ...(Number(USETEXTLINKS) ? [linkTo(node, icon, name)]
                                                                      : [linkTo(node, icon), name]));
    }

    function makeHitRow(node) {
        const row = document.createElement('div');
        row.className = 'row';
        row.id = 'hit' + node.number;
        row.setAttribute('role', 'option');
        row.title = node.path.join(SEPARATOR);
        return row;
    }

    function dressHitRow(row, node, index) {
        row.setAttribute('aria-selected', index === hits.active);
        row.setAttribute('aria-posinset', index + 1);
        row.setAttribute('aria-setsize', hits.items.length);
        row.classList.toggle('current', node === current);
        if (row.query === box.value)
            return;
        row.query = box.value;
        const above = node.path.slice(0, -1).join(SEPARATOR);
        const path = span('path', span('above', above || foldersTree.title),
                          span('address', node.address && '0x' + node.address));
        row.replaceChildren(linkTo(node, picture(node.picture, 'icon', node.isFolder ? '▸' : '·'),
                                   span('name', ...marked(node.title, box.value)), path));
    }

    /// The nodes that show: a folder's children follow it while it is open.
    function visibleNodes() {
        const nodes = [];
        (function add(node) {
            nodes.push(node);
            if (node.isOpen)
                node.children.forEach(add);
        }(foldersTree));
        return nodes;
    }

    /// Brings the tree up to date after folders were opened or closed; a node that can't be seen any more hands the
    /// keyboard to the folder that was closed above it.
    function updateTree(active) {
        for (let above = active.parent; above; above = above.parent) {
            if (!above.isOpen)
                active = above;
        }
        const nodes = visibleNodes();
        tree.setItems(nodes, nodes.indexOf(active));
        tree.box.setAttribute('aria-activedescendant', 'node' + active.number);
    }

    function setOpen(node, isOpen) {
        if (!node.canOpen || !node.parent || node.isOpen === isOpen)
            return;
        node.isOpen = isOpen;
        updateTree(tree.activeItem || node);
    }

    function moveTo(index) {
        tree.activate(index);
        tree.box.setAttribute('aria-activedescendant', 'node' + tree.activeItem.number);
    }

    /// Opens what lies above a node and makes it the active one.
    function reveal(node) {
        for (let above = node.parent; above; above = above.parent)
            above.isOpen = true;
        updateTree(node);
        if (!tree.box.hidden)
            moveTo(tree.active);
    }

    function setCurrent(node) {
        current = node;
        reveal(node);
        hits.paint();
        siteBrowser.writeAsked(node.link);
    }

    /// Marks the node of what the other frame shows, after a link in a page was followed or a step of history made.
    function follow() {
        const link = siteBrowser.shownLink();
        if (!link || (current && current.link === link))
            return;
        const node = nodeOfLink(link);
        if (node)
            setCurrent(node);
    }

    /// Anchors can stand for several nodes, such as a structure and its first member: the first is the outermost one.
    function nodeOfLink(link) {
        if (!byLink) {
            byLink = new Map([[foldersTree.link, foldersTree]]);
            for (const node of allNodes) {
                const page = node.link.slice(0, Math.max(0, node.link.lastIndexOf('#')));
                for (const key of [node.link, page]) {
                    if (!byLink.has(key))
                        byLink.set(key, node);
                }
            }
        }
        return byLink.get(link) || null;
    }

    // The search box -------------------------------------------------------------------------------------------------

    function updateHits(active, scrollTop) {
        const isSearching = box.value.trim() !== '';
        const found = search(box.value);
        const turned = tree.box.hidden !== isSearching;
        if (turned && isSearching) {
            treeScroll = tree.box.scrollTop;
            currentBeforeSearch = current;
        }
        tree.box.hidden = isSearching;
        hits.box.hidden = !isSearching;
        box.setAttribute('aria-expanded', isSearching);
        count.textContent = !isSearching ? '' : found.length === 0 ? 'Nothing found'
            : found.length === 1 ? '1 hit' : found.length.toLocaleString('en') + ' hits';
        hits.box.scrollTop = 0;
        hits.setItems(found, found.length > 0 ? active : -1);
        hits.box.scrollTop = scrollTop;
        nameActiveHit();
        if (turned && !isSearching) {
            tree.box.scrollTop = treeScroll;
            if (current === currentBeforeSearch)
                tree.paint(); // nothing was opened: the tree is as it was left
            else
                reveal(current);
        }
    }

    function nameActiveHit() {
        if (hits.activeItem)
            box.setAttribute('aria-activedescendant', 'hit' + hits.activeItem.number);
        else
            box.removeAttribute('aria-activedescendant');
    }

    function leaveSearch() {
        box.value = '';
        updateHits(0, 0);
        tree.box.focus();
    }

    function enterSearch(event) {
        event.preventDefault();
        window.focus();
        box.focus();
        box.select();
    }

    function press(link) {
        if (link)
            link.click();
    }

    // Keys -----------------------------------------------------------------------------------------------------------

    const hitKeys = {
        ArrowDown: function () { hits.activate(hits.active + 1); },
        ArrowUp: function () { hits.activate(hits.active - 1); },
        PageDown: function () { hits.activate(hits.active + hits.rowsPerPage); },
        PageUp: function () { hits.activate(hits.active - hits.rowsPerPage); },
        Enter: function () { press(hits.linkOfActive()); },
        Escape: leaveSearch,
    };

    const treeKeys = {
        ArrowDown: function () { moveTo(tree.active + 1); },
        ArrowUp: function () { moveTo(tree.active - 1); },
        PageDown: function () { moveTo(tree.active + tree.rowsPerPage); },
        PageUp: function () { moveTo(tree.active - tree.rowsPerPage); },
        Home: function () { moveTo(0); },
        End: function () { moveTo(tree.items.length - 1); },
        ArrowRight: function (node) {
            if (node.canOpen && !node.isOpen)
                setOpen(node, true);
            else if (node.canOpen)
                moveTo(tree.active + 1);
        },
        ArrowLeft: function (node) {
            if (node.canOpen && node.isOpen && node.parent)
                setOpen(node, false);
            else if (node.parent)
                moveTo(tree.items.indexOf(node.parent));
        },
        Enter: function () { press(tree.linkOfActive()); },
        ' ': function () { press(tree.linkOfActive()); },
        '*': function (node) {
            for (const sibling of node.parent ? node.parent.children : [])
                sibling.isOpen = sibling.canOpen;
            updateTree(node);
            moveTo(tree.active);
        },
    };

    let typed = '';
    let typedAt = 0;

    /// Letters typed in a row lead to the next visible name that begins with them.
    function jump(letter, time) {
        const row = time - typedAt < 700 ? typed + letter : letter;
        typedAt = time;
        for (typed of row === letter ? [letter] : [row, letter]) {
            for (let step = typed.length === 1 ? 1 : 0; step < tree.items.length; ++step) {
                const index = (tree.active + step) % tree.items.length;
                if (tree.items[index].title.toLowerCase().startsWith(typed.toLowerCase())) {
                    moveTo(index);
                    return;
                }
            }
        }
    }

    function treeKeyPressed(event) {
        if (event.ctrlKey || event.metaKey || event.altKey || !tree.activeItem)
            return;
        const action = treeKeys[event.key];
        if (action)
            action(tree.activeItem);
        else if (event.key.length === 1 && event.key !== '/')
            jump(event.key, event.timeStamp);
        else
            return;
        event.preventDefault();
    }

    function searchKeyPressed(event) {
        const action = hitKeys[event.key];
        if (!action || event.isComposing || (hits.items.length === 0 && event.key !== 'Escape'))
            return;
        action();
        nameActiveHit();
        event.preventDefault();
    }

    // Clicks ---------------------------------------------------------------------------------------------------------

    /// What a click in a list means: the browser follows the link by itself; a click that opens another window leaves
    /// the tree as it is.
    function clicked(list, event) {
        const node = list.itemOf(event);
        if (!node || event.ctrlKey || event.metaKey || event.shiftKey)
            return;
        if (event.target.closest('.handle')) {
            node.isOpen = !node.isOpen;
            updateTree(node);
        } else if (event.target.closest('a')) {
            if (list === hits)
                hits.active = hits.items.indexOf(node);
            node.isOpen = node.canOpen;
            setCurrent(node);
        } else if (list === tree) {
            moveTo(tree.items.indexOf(node));
        }
    }

    /// A list keeps the keyboard when one of its rows is pressed, which may soon be gone.
    function pressedInside(focus, event) {
        if (event.button === 0 && event.target.closest('.row')) {
            event.preventDefault();
            focus.focus({ preventScroll: true });
        }
    }

    // State ----------------------------------------------------------------------------------------------------------

    function startsOpen(node) {
        return node.canOpen && (Boolean(Number(STARTALLOPEN)) || !node.parent);
    }

    /// What a reload restores: folders that are not as they start, the page, the search and how far one had scrolled.
    function keepState() {
        const turned = allNodes.filter(function (node) { return node.isOpen !== startsOpen(node); });
        siteBrowser.remember(JSON.stringify({
            turned: turned.slice(0, MOST_KEPT).map(function (node) { return node.path; }),
            current: current.path,
            query: box.value,
            hit: hits.active,
            scroll: [tree.box.hidden ? treeScroll : tree.box.scrollTop, hits.box.scrollTop],
        }));
    }

    function nodeAt(path) {
        let node = foldersTree;
        for (const title of Array.isArray(path) ? path : []) {
            node = node && node.children.find(function (child) { return child.title === title; });
        }
        return node || null;
    }

    /// A text that is not what was kept, such as that of an older site, restores nothing.
    function keptState() {
        try {
            const state = JSON.parse(siteBrowser.recall());
            return Array.isArray(state.turned) && Array.isArray(state.scroll) ? state : null;
        } catch {
            return null;
        }
    }

    function restoreState() {
        const state = keptState();
        const asked = siteBrowser.askedLink();
        const kept = state && nodeAt(state.current);
        for (const path of state ? state.turned : []) {
            const node = nodeAt(path);
            if (node)
                node.isOpen = node.canOpen && !startsOpen(node);
        }
        current = (asked && !(kept && kept.link === asked) && nodeOfLink(asked)) || kept || foldersTree;
        if (current === kept)
            updateTree(current); // its folders may have been closed
        else
            reveal(current);
        if (current !== foldersTree)
            siteBrowser.show(current.link);
        if (kept && current === kept) {
            tree.box.scrollTop = Number(state.scroll[0]) || 0;
            box.value = String(state.query || '');
            if (box.value)
                updateHits(Number(state.hit) || 0, Number(state.scroll[1]) || 0);
        }
        tree.paint();
    }

    // Start ----------------------------------------------------------------------------------------------------------

    /// Shows what menu.js has made.
    window.initializeDocument = function () {
        box = document.getElementById('query');
        count = document.getElementById('count');
        if (!foldersTree) {
            document.getElementById('trouble').hidden = false;
            return;
        }
        tree = new LongList(document.getElementById('tree'), makeTreeRow, dressTreeRow);
        hits = new LongList(document.getElementById('hits'), makeHitRow, dressHitRow);
        for (const node of [foldersTree, ...allNodes])
            node.isOpen = startsOpen(node);
        foldersTree.number = allNodes.length;
        document.title = foldersTree.title;

        restoreState();

        box.addEventListener('input', function () { updateHits(0, 0); });
        box.addEventListener('keydown', searchKeyPressed);
        tree.box.addEventListener('keydown', treeKeyPressed);
        for (const [list, focus] of [[tree, tree.box], [hits, box]]) {
            list.box.addEventListener('mousedown', function (event) { pressedInside(focus, event); });
            list.box.addEventListener('click', function (event) { clicked(list, event); });
        }
        document.getElementById('fold').addEventListener('click', function () {
            for (const node of allNodes)
                node.isOpen = false;
            updateTree(tree.activeItem || foldersTree);
            moveTo(tree.active);
        });
        document.addEventListener('keydown', function (event) {
            if (event.key === '/' && event.target !== box && !event.ctrlKey && !event.metaKey && !event.altKey)
                enterSearch(event);
        });
        window.addEventListener('pagehide', keepState);
        siteBrowser.watch(follow, enterSearch);
        (tree.box.hidden ? box : tree.box).focus({ preventScroll: true }); // keys work from the start
    };
}());
