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

-- What follows the list of guides on the first page.
function Pandoc(document)
    if PANDOC_STATE.output_file:match("index%.html$") then
        local guides = {
            { "first-steps", "First steps" }, { "application", "Writing an application" },
            { "lifetimes", "Threads, lifetimes, time-outs" }, { "testing", "Testing with the simulator" },
            { "diagnosing", "Diagnosing with captures" }, { "porting", "Porting to a board" },
            { "protocol", "Protocol" }, { "api/index", "API reference" },
        }
        local items = {}
        for _, guide in ipairs(guides) do
            table.insert(items, { pandoc.Plain { pandoc.Link(guide[2], guide[1] .. ".html") } })
        end
        table.insert(document.blocks, 2, pandoc.BulletList(items))
    end
    return document
end
