// Shows the box with the links on a book page. The page has the elements #page, #box with #heading and #links in it,
// and #notice, whose own text is what the page says when there is nothing to show. After this script it loads the
// configuration: config.js declares `config`; unscramble.js declares `bookPlugin`.
//
// A configuration is other people's text and may be damaged anywhere: texts are put in as text, numbers and colours
// only after a look at them, and whatever else there is costs no more than one line in #notice.
"use strict";

(function () {
    const schemes = ["http", "https", "ftp", "mailto"];
    const messages = {
        damaged: "The link list’s configuration is damaged.",
        incomplete: "Part of the configuration is damaged or missing.",
        noRoom: "The margins leave no room for the box.",
    };
    let isIncomplete = false;
    let hasScriptFailed = false;

    function instead(fallback) {
        isIncomplete = true;
        return fallback;
    }

    function isObject(value) {
        return typeof value === "object" && value !== null && !Array.isArray(value);
    }

    function part(value) {
        return value === undefined ? {} : isObject(value) ? value : instead({});
    }

    function text(value) {
        if (typeof value === "string" || value === undefined)
            return value ?? "";
        return typeof value === "number" ? String(value) : instead("");
    }

    function number(value, least, most, fallback) {
        const isDigits = typeof value === "string" && /^-?\d+(\.\d+)?$/.test(value);
        const result = isDigits ? Number(value) : value;
        if (value === undefined)
            return fallback;
        if (typeof result !== "number" || !Number.isFinite(result))
            return instead(fallback);
        return Math.min(most, Math.max(least, result));
    }

    function percent(value, fallback) {
        const match = typeof value === "string" ? /^(-?\d+(?:\.\d+)?)%$/.exec(value) : null;
        return match ? Math.min(1000, Math.max(-1000, Number(match[1]))) : instead(fallback);
    }

    // The address to write for a link; empty where there should be none. Browsers overlook control characters in a
    // scheme and take a backslash for a slash; "//host" leads to another host, or out of the disk's own files.
    function address(link) {
        const trimmed = link.trim();
        const scheme = /^([^/?#:]*):/.exec(trimmed);
        const isRefused = trimmed === "" || /[\u0000-\u001f\u007f-\u009f\\]/.test(link) || trimmed.startsWith("//")
            || (scheme && !schemes.includes(scheme[1].toLowerCase()));
        return isRefused ? "" : trimmed;
    }

    // Only a line break means anything in a text.
    function putText(element, content) {
        content.split(/<br\s*\/?>/i).forEach((line, index) => {
            if (index > 0)
                element.append(document.createElement("br"));
            element.append(line);
        });
    }

    function putFont(element, settings, size) {
        const points = number(settings.fontSize, 0, 200, size);
        element.style.fontSize = `calc(${points >= 1 ? points : instead(size)} * var(--pt, 1pt))`;
        const color = settings.color === undefined ? "#000000" : text(settings.color);
        element.style.color = /^#[0-9a-f]{6}$/i.test(color) ? color : instead("#000000");
    }

    function itemElement(item) {
        const link = text(item.link);
        const title = text(item.title);
        const href = address(link);
        const content = document.createElement(href ? "a" : "span");
        putText(content, title.trim() === "" ? link : title);
        if (href) {
            content.setAttribute("href", href);
            content.rel = "noopener noreferrer";
        }
        // Each line finds its own reading direction, and a character that turns it round ends with the line.
        const line = document.createElement("li");
        line.dir = "auto";
        line.append(content);
        return content.textContent.trim() === "" ? null : line;
    }

    function putLinks(list, content) {
        // A list without items is an empty object: the generator makes an array for items alone.
        const items = Array.isArray(content) ? content : Object.keys(part(content)).length > 0 ? instead([]) : [];
        for (const item of items) {
            const line = itemElement(isObject(item) ? item : instead({}));
            if (line)
                list.append(line);
        }
        list.hidden = !list.hasChildNodes();
    }

    // Answers whether any of the box is on the page.
    function putPlace(box, basic) {
        const left = percent(basic.left, 10);
        const top = percent(basic.top, 26);
        const width = percent(basic.width, 30);
        const height = percent(basic.height, 48);
        Object.assign(box.style, { left: `${left}%`, top: `${top}%`, width: `${width}%`, height: `${height}%` });
        return width > 0 && height > 0 && left < 100 && top < 100 && left + width > 0 && top + height > 0;
    }

    // A box that scrolls is a stop of the Tab key, so that the arrow keys can scroll it.
    function followOverflow(box) {
        new ResizeObserver(() => {
            if (box.scrollHeight > box.clientHeight || box.scrollWidth > box.clientWidth)
                box.tabIndex = 0;
            else
                box.removeAttribute("tabindex");
        }).observe(box);
    }

    // Draws what there is and answers what is to be said about the rest.
    function show(configuration, box) {
        if (!isObject(configuration) || !isObject(configuration.properties)
            || !isObject(configuration.properties.extended))
            return messages.damaged;
        const { basic, extended } = configuration.properties;
        const title = part(extended.title);
        const body = part(extended.body);
        const heading = document.getElementById("heading");
        const list = document.getElementById("links");

        putText(heading, text(title.content));
        heading.dir = "auto";
        putFont(heading, title, 16);
        heading.hidden = heading.textContent.trim() === "";
        if (heading.hidden) {
            box.removeAttribute("aria-labelledby");
            box.setAttribute("aria-label", "Links");
        }
        putFont(list, body, 12);
        putLinks(list, body.content);

        box.style.opacity = number(configuration.opacity, 0, 1, 1);
        document.getElementById("page").dataset.layer
            = number(configuration.layout, 0, 1, 1) > 0 ? "above" : "below";
        if (!putPlace(box, isObject(basic) ? basic : {}))
            return messages.noRoom;
        box.hidden = false;
        followOverflow(box);
        return isIncomplete ? messages.incomplete : "";
    }

    function start() {
        const box = document.getElementById("box");
        const notice = document.getElementById("notice");
        const configuration = window.config === undefined ? window.bookPlugin : window.config;
        let message = hasScriptFailed ? messages.damaged : notice.textContent;
        try {
            if (configuration !== undefined)
                message = show(configuration, box);
        } catch {
            message = messages.damaged;
        }
        if (message === messages.damaged)
            box.hidden = true;
        notice.textContent = message;
        notice.hidden = message === "";
    }

    // A configuration that is no script comes as an error event of the window, a missing file as one of its element.
    window.addEventListener("error", () => { hasScriptFailed = true; });
    document.addEventListener("DOMContentLoaded", start);
})();
