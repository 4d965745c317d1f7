// What a reader has before them on a page with the box, as one object; the value of this script. Tests evaluate it in
// the embedded view and in Chromium.
(() => {
    const byId = (id) => document.getElementById(id);
    const isShown = (element) => element.checkVisibility?.() ?? element.getClientRects().length > 0;
    const tenth = (value) => Math.round(value * 10) / 10;
    // Line breaks as line feeds, everything else as it stands.
    const linesOf = (element) => [...element.childNodes].map((node) =>
        node.nodeName === "BR" ? "\n" : node.nodeType === Node.TEXT_NODE ? node.data : linesOf(node)).join("");
    const points = (element) =>
        parseFloat(getComputedStyle(element).fontSize) / parseFloat(getComputedStyle(byId("box")).fontSize) * 12;
    const [page, box] = ["page", "box"].map((id) => byId(id).getBoundingClientRect());
    const notice = document.createRange();
    notice.selectNodeContents(byId("notice"));
    return {
        notice: isShown(byId("notice")) ? byId("notice").textContent : "",
        noticeLines: new Set([...notice.getClientRects()].map((rect) => Math.round(rect.top))).size,
        isBoxShown: isShown(byId("box")),
        left: tenth((box.left - page.left) / page.width * 100),
        top: tenth((box.top - page.top) / page.height * 100),
        width: tenth(box.width / page.width * 100),
        height: tenth(box.height / page.height * 100),
        opacity: Number(getComputedStyle(byId("box")).opacity),
        isAbove: Number(getComputedStyle(byId("box")).zIndex) > Number(getComputedStyle(byId("print")).zIndex),
        heading: isShown(byId("heading")) ? linesOf(byId("heading")) : null,
        headingPoints: tenth(points(byId("heading"))),
        headingColor: getComputedStyle(byId("heading")).color,
        bodyPoints: tenth(points(byId("links"))),
        bodyColor: getComputedStyle(byId("links")).color,
        items: [...document.querySelectorAll("#links li")].map((line) => ({
            text: linesOf(line),
            href: line.querySelector("a")?.getAttribute("href") ?? null,
            direction: getComputedStyle(line).direction,
        })),
        // Elements that no text may bring into the box, and attributes of theirs.
        strangers: [...byId("box").querySelectorAll("*")].filter((element) =>
            !["H2", "UL", "LI", "A", "SPAN", "BR"].includes(element.nodeName)
            || element.getAttributeNames().some((name) =>
                !["id", "role", "dir", "href", "rel", "style", "hidden"].includes(name))).map((element) => element.outerHTML),
        isScriptRun: "pwned" in window,
    };
})();
