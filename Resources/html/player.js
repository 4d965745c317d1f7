"use strict";

(function () {
    const webSchemes = ["http", "https", "ftp", "mailto"];

    // Texts come from a person: they are put in as text, and only <br/> means anything.
    function putText(element, text) {
        String(text ?? "").split(/<br\s*\/?>/i).forEach((line, index) => {
            if (index > 0)
                element.append(document.createElement("br"));
            element.append(line);
        });
    }

    // Browsers overlook blanks and control characters in front of and inside a scheme, so the check does too.
    function isHarmless(link) {
        const scheme = /^([a-z][a-z0-9+.-]*):/i.exec(link.replace(/[\u0000-\u0020\u007f-\u00a0]/g, ""));
        return link.trim() !== "" && (!scheme || webSchemes.includes(scheme[1].toLowerCase()));
    }

    function putStyle(element, settings) {
        if (settings.fontSize > 0)
            element.style.fontSize = `calc(${Number(settings.fontSize)} * var(--pt))`;
        element.style.color = settings.color ?? "";
    }

    function itemElement(item) {
        const link = String(item.link ?? "");
        const anchor = document.createElement("a");
        putText(anchor, item.title || link);
        if (isHarmless(link)) {
            anchor.setAttribute("href", link);
            anchor.rel = "noopener noreferrer";
        }
        const line = document.createElement("li");
        line.append(anchor);
        return line;
    }

    function show(configuration) {
        const properties = configuration.properties ?? {};
        const { title = {}, body = {} } = properties.extended ?? {};
        const box = document.getElementById("box");
        for (const side of ["left", "top", "width", "height"])
            box.style[side] = properties.basic?.[side] ?? "";
        box.style.opacity = configuration.opacity ?? 1;
        box.style.zIndex = configuration.layout > 0 ? 2 : 0; // below or above the lines of print

        const heading = box.querySelector("h1");
        putText(heading, title.content);
        putStyle(heading, title);
        const list = box.querySelector("ul");
        putStyle(list, body);
        if (Array.isArray(body.content))
            list.append(...body.content.map(itemElement));
        box.hidden = false;
    }

    if (typeof window.config === "object" && window.config !== null)
        show(window.config);
    else
        document.getElementById("notice").hidden = false;
})();
