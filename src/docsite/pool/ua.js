// What the tree asks of the browser, and how much of it a browser gives.
//
// A site is opened from a server or from the disk. From the disk a browser may take every file for a site of its own:
// then a frame can be sent to another page, but nobody can see what it shows. What is refused is done without, and
// nothing here throws.

var siteBrowser = (function () {
    'use strict';

    const PAGE_FRAME = 'basefrm';               // the frame beside the menu, and the target of all links
    const STORE = 'veldmap ' + location.pathname; // files on the disk may share one store
    const PATIENCE = 5000; // milliseconds

    let awaited = null; // the link that the other frame was sent to and does not show yet

    /// The value of a call that a browser may refuse, or null.
    function allowed(call) {
        try {
            const value = call();
            return value === undefined ? null : value;
        } catch {
            return null;
        }
    }

    /// Keeps a text for this window until it is closed.
    function remember(text) {
        allowed(function () { sessionStorage.setItem(STORE, text); });
    }

    /// The text that was kept, or null.
    function recall() {
        return allowed(function () { return sessionStorage.getItem(STORE); });
    }

    /// As encodeURIComponent, which throws at half a character.
    function encoded(text) {
        return encodeURIComponent(text.replace(/\p{Surrogate}/gu, '\ufffd'));
    }

    /// The address of a link of menu.js, a file name with an anchor: names are as the description has them, and may
    /// hold what means something else in an address.
    function addressOf(link) {
        const anchor = link.lastIndexOf('#');
        const file = anchor < 0 ? link : link.slice(0, anchor);
        return encoded(file) + (anchor < 0 ? '' : '#' + encoded(link.slice(anchor + 1)));
    }

    /// The link of menu.js that has an address, or null.
    function linkOf(address) {
        return allowed(function () {
            const url = new URL(address);
            return decodeURIComponent(url.pathname.split('/').pop()) + decodeURIComponent(url.hash);
        });
    }

    /// The link of what the other frame shows, or null where that can't be seen.
    function shownLink() {
        return linkOf(allowed(function () { return parent.frames[PAGE_FRAME].location.href; }));
    }

    /// Sends the other frame to a link, without a step of history.
    function show(link) {
        allowed(function () {
            parent.frames[PAGE_FRAME].location.replace(new URL(addressOf(link), location.href));
            awaited = link;
            setTimeout(function () { awaited = null; }, PATIENCE); // it may not be there
        });
    }

    /// Calls changed() each time the other frame shows something else, where that can be seen; slash() when "/" is
    /// pressed in it.
    function watch(changed, slash) {
        function look() {
            if (awaited && shownLink() !== awaited)
                return; // what it showed before is still being loaded
            awaited = null;
            changed();
        }
        function pressed(event) {
            if (event.key === '/' && !event.ctrlKey && !event.metaKey && !event.altKey)
                slash(event);
        }
        allowed(function () {
            const frame = parent.document.getElementsByName(PAGE_FRAME)[0];
            function attach() {
                allowed(function () {
                    frame.contentWindow.addEventListener('hashchange', look);
                    frame.contentWindow.addEventListener('keydown', pressed);
                });
                look();
            }
            frame.addEventListener('load', attach);
            attach();
        });
    }

    /// The link that the address of the whole site names behind its "#", as in index.html#UART0.html#40000000m; or null.
    function askedLink() {
        const hash = allowed(function () { return parent === window ? '' : parent.location.hash; });
        return hash ? allowed(function () { return decodeURIComponent(hash.slice(1)); }) : null;
    }

    /// Writes a link into the address of the whole site, to be copied from there.
    function writeAsked(link) {
        allowed(function () {
            if (parent !== window)
                parent.history.replaceState(parent.history.state, '', '#' + addressOf(link));
        });
    }

    return {
        PAGE_FRAME, remember, recall, addressOf, shownLink, show, watch, askedLink, writeAsked,
    };
}());
