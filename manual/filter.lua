-- What pandoc does to a page of the manual beside turning it into HTML:
--   {{Name}}          becomes the text of that name in src/language/texts.inc, in the language of the page, so that the
--                     manual quotes the program as it is; conversions such as %s stand as an ellipsis
--   page.md#anchor    becomes a link to the page's HTML, and pictures are those beside the two languages
--   pages             the page itself is marked in the list of pages
-- and beside the page it writes what the search looks through: one entry a section, as a script that adds to a list.

local texts = {}
local page
local pageTitle
local indexName

-- The string constants of a row, joined where several follow each other: English, Russian.
local function stringsOfRow(row)
    local found, current, i = {}, nil, 1
    while i <= #row do
        local c = row:sub(i, i)
        if c == '"' then
            local piece = {}
            i = i + 1
            while row:sub(i, i) ~= '"' do
                if row:sub(i, i) == "\\" then
                    i = i + 1
                    piece[#piece + 1] = row:sub(i, i) == "n" and " " or row:sub(i, i)
                else
                    piece[#piece + 1] = row:sub(i, i)
                end
                i = i + 1
            end
            current = (current or "") .. table.concat(piece)
        elseif c == "," and current then
            found[#found + 1] = current
            current = nil
        end
        i = i + 1
    end
    found[#found + 1] = current
    return found
end

local function asQuoted(text)
    text = text:gsub("%%l*[sdup]", "…"):gsub("%%%%", "%%"):gsub("&(%S)", "%1"):gsub("%s+", " ")
    return (text:gsub("^ ", ""):gsub(" $", ""))
end

local function readTexts(name, language)
    local file = assert(io.open(name, "rb"))
    local all = file:read("a"):gsub("\r", "")
    file:close()
    -- A text may hold brackets: a row ends where a quotation mark, a bracket and the line end.
    for key, row in all:gmatch("TEXT_ROW%((%w+), %d+,(.-)\"%)\n") do
        texts[key] = asQuoted(stringsOfRow(row .. '"')[language == "ru" and 2 or 1])
    end
end

-- A name that is no text stands as it is: scripts/check-manual.py finds it, and nobody's build ends for it.
local function quoted(name)
    if not texts[name] then
        io.stderr:write("There is no text ", name, " in texts.inc\n")
    end
    return texts[name] or name
end

local function readMeta(meta)
    page = pandoc.utils.stringify(meta.page)
    indexName = pandoc.utils.stringify(meta.index)
    readTexts(pandoc.utils.stringify(meta.texts), pandoc.utils.stringify(meta.lang))
    for _, entry in ipairs(meta.pages) do
        if pandoc.utils.stringify(entry.file) == page then
            entry.current = true
            meta.pagetitle = entry.title
            pageTitle = pandoc.utils.stringify(entry.title)
        end
    end
    return meta
end

local function quoteTexts(word)
    if not word.text:find("{{", 1, true) then
        return nil
    end
    local parts, at = pandoc.List(), 1
    for before, name, after in word.text:gmatch("(){{(%w+)}}()") do
        if before > at then
            parts:insert(pandoc.Str(word.text:sub(at, before - 1)))
        end
        parts:insert(pandoc.Span(pandoc.Str(quoted(name)), pandoc.Attr("", { "ui" })))
        at = after
    end
    if at <= #word.text then
        parts:insert(pandoc.Str(word.text:sub(at)))
    end
    return parts
end

local function turnLink(link)
    link.target = link.target:gsub("^([%w_-]+)%.md", "%1.html")
    return link
end

local function turnPicture(picture)
    picture.src = picture.src:gsub("^%.%./%.%./docs/pictures/", "../pictures/")
    return picture
end

local function jsString(text)
    return '"' .. text:gsub("\\", "\\\\"):gsub('"', '\\"'):gsub("%s+", " "):gsub("<", "\\u003c") .. '"'
end

local function writeIndex(document)
    local file = assert(io.open(indexName, "wb"))
    local heading, anchor, words = nil, nil, {}
    local function endSection()
        if heading then
            file:write("tarno2Index.push([", jsString(page .. ".html#" .. anchor), ", ", jsString(heading), ", ",
                jsString(table.concat(words, " ")), "]);\n")
        end
    end
    file:write("var tarno2Index = tarno2Index || [];\n")
    for _, block in ipairs(document.blocks) do
        if block.t == "Header" then
            endSection()
            heading, anchor, words = pandoc.utils.stringify(block), block.identifier, {}
            if block.level > 1 then
                heading = pageTitle .. ": " .. heading
            end
        else
            -- Cells and paragraphs are parted, which a plain conversion to words would join.
            pandoc.walk_block(pandoc.Div({ block }), {
                Plain = function(b) words[#words + 1] = pandoc.utils.stringify(b) end,
                Para = function(b) words[#words + 1] = pandoc.utils.stringify(b) end,
                CodeBlock = function(b) words[#words + 1] = b.text end,
            })
        end
    end
    endSection()
    file:close()
end

return {
    { Meta = readMeta },
    { Str = quoteTexts, Link = turnLink, Image = turnPicture },
    { Pandoc = writeIndex },
}
