// The search of the manual. It looks through what the pages' scripts have added to tarno2Index: entries of a place, its
// heading and its words. It needs no server and no network.
(function () {
    "use strict";
    var field = document.getElementById("search");
    var list = document.getElementById("found");

    // Case makes no difference, nor do the dots of ё, which many leave out. The length stays.
    function folded(text) {
        return text.toLowerCase().replace(/ё/g, "е");
    }

    var entries = (window.tarno2Index || []).map(function (entry) {
        return { place: entry[0], heading: entry[1], words: entry[2], low: folded(entry[1] + " " + entry[2]) };
    });

    // Long words are looked for without their endings, which change with the case in Russian.
    function stems(text) {
        return folded(text).split(/\s+/).filter(Boolean).map(function (word) {
            return /^[а-я]{5,}$/.test(word) ? word.slice(0, word.length > 6 ? -2 : -1) : word;
        });
    }

    function found(words) {
        return entries.filter(function (entry) {
            return words.every(function (word) { return entry.low.indexOf(word) >= 0; });
        }).map(function (entry) {
            var heading = folded(entry.heading);
            var inHeading = words.filter(function (word) { return heading.indexOf(word) >= 0; }).length;
            return { entry: entry, rank: inHeading };
        }).sort(function (a, b) { return b.rank - a.rank; }).slice(0, 30);
    }

    function surroundings(entry, word) {
        var at = folded(entry.words).indexOf(word);
        var from = Math.max(0, at - 40);
        return (from > 0 ? "…" : "") + entry.words.slice(from, from + 110) + "…";
    }

    function row(entry, word) {
        var item = document.createElement("li");
        var link = document.createElement("a");
        var words = document.createElement("small");
        link.href = entry.place;
        link.textContent = entry.heading;
        words.textContent = surroundings(entry, word);
        item.appendChild(link);
        item.appendChild(words);
        return item;
    }

    function show() {
        var words = stems(field.value);
        list.textContent = "";
        list.hidden = words.length === 0;
        if (list.hidden) {
            return;
        }
        var rows = found(words);
        rows.forEach(function (each) { list.appendChild(row(each.entry, words[0])); });
        if (rows.length === 0) {
            list.appendChild(document.createElement("li")).textContent = list.dataset.nothing;
        }
    }

    field.addEventListener("input", show);
    document.addEventListener("keydown", function (event) {
        if (event.key === "/" && document.activeElement !== field) {
            event.preventDefault();
            field.focus();
        } else if (event.key === "Enter" && document.activeElement === field && list.querySelector("a")) {
            list.querySelector("a").click();
        }
    });
})();
