-- SPDX-License-Identifier: MIT
-- Copyright (c) 2026 The vym authors

-- Links between the guides, which all become pages of one directory. What else is linked to is in the sources.
function Link(link)
    local path, anchor = link.target:match("^([^#:]*)(#?.*)$")
    if path and path:match("%.md$") then
        local name = path:match("([^/]*)%.md$")
        link.target = (name == "README" and "index" or name) .. ".html" .. anchor
    end
    return link
end

-- The first page leads to the API reference, which is written beside these pages.
function Pandoc(document)
    if PANDOC_STATE.output_file:match("index%.html$") then
        table.insert(document.blocks, 2, pandoc.Para { pandoc.Link("API reference", "api/index.html") })
    end
    return document
end
