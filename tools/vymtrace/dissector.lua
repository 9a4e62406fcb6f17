-- SPDX-License-Identifier: MIT
-- Copyright (c) 2026 The vym authors

-- Shows in Wireshark and tshark the commands and events of the vym library that are inside the vendor packets of
-- its capture, client_sock.log. Written by "vymtrace --emit lua" from the description of the protocol.
--   tshark -X lua_script:vym.lua -r client_sock.log -Y vym -T fields -e frame.number -e vym.profile -e vym.name
--   wireshark -X lua_script:vym.lua client_sock.log

-- Layouts of blocks, and messages by direction and tag.
local layouts = {}
local messages = { command = {}, event = {} }
@TABLES@
-- ---- values: a port of the codec, with its messages ----

local WIDTH = { Byte = 2, Word = 4, Dword = 8, HexDigit = 1, Decimal = 2, Address = 12, UuidFirst = 32,
                UuidLast = 32, Oob = 32 }
local RAW_WIDTH = { U8 = 1, Le16 = 2, Le32 = 4, RawAddress = 6, BigAddress = 6, RawUuid = 16 }
local NUMBERS = { Byte = true, Word = true, Dword = true, HexDigit = true, Decimal = true, U8 = true, Le16 = true,
                  Le32 = true }
local RAW = { U8 = true, Le16 = true, Le32 = true, RawAddress = true, BigAddress = true, RawUuid = true,
              Bytes = true, FixedText = true, RestText = true, NulText = true, SizedBytes = true, Group = true,
              Choice = true }
local UNESCAPED = { ["\xDD"] = "\0", ["\xDE"] = "\r", ["\xDF"] = "\n", ["\xDC"] = "\xDC" }

local function hex_of(bytes)
    return (bytes:gsub(".", function(byte) return string.format("%02X", byte:byte()) end))
end

local function reversed_pairs(digits)
    local pairs_of = {}
    for pair in digits:gmatch("..") do
        table.insert(pairs_of, 1, pair)
    end
    return table.concat(pairs_of)
end

local function address_text(digits)
    return (digits:upper():gsub("..", "%0:"):sub(1, -2))
end

-- What the Base UUID completes is written as its 16 or 32 bits.
local function uuid_text(digits)
    digits = digits:upper()
    if digits:sub(9) == "00001000800000805F9B34FB" then
        return digits:sub(1, 4) == "0000" and digits:sub(5, 8) or digits:sub(1, 8)
    end
    return table.concat({ digits:sub(1, 8), digits:sub(9, 12), digits:sub(13, 16), digits:sub(17, 20),
                          digits:sub(21) }, "-")
end

local function unescape(escaped)
    local good = true
    local bytes = escaped:gsub("\xDC(.?)", function(second)
        good = good and UNESCAPED[second] ~= nil
        return UNESCAPED[second]
    end)
    return good and bytes or nil
end

-- The number of the field of this name, from the inside out.
local function number_of(scope, name)
    while scope do
        for _, value in ipairs(scope.values) do
            if value.field.name == name then
                return value.number or 0
            end
        end
        scope = scope.outer
    end
    return 0
end

local function has(scope, name)
    while scope do
        for _, value in ipairs(scope.values) do
            if value.field.name == name then
                return true
            end
        end
        scope = scope.outer
    end
    return false
end

local function applies(field, scope)
    local target = number_of(scope, "target")
    if field.when == "Contact" then
        return target == 5 or target == 6
    elseif field.when == "CallLog" then
        return (target >= 7 and target <= 10) or target == 15
    end
    return true
end

local function chosen(field, scope)
    local key = number_of(scope, field.count)
    local layout = field.inner
    while layout and layout.key ~= key and layout.key ~= 0 do
        layout = layout.next
    end
    return layout
end

local read_fields

local function new_reader(text)
    return { text = text, at = 1, problem = "", only_ended = false }
end

local function left(reader)
    return #reader.text - reader.at + 1
end

local function fail(reader, field, why)
    reader.problem = field.name .. ": " .. why
    return false
end

local function take(reader, field, length)
    if left(reader) < length then
        reader.only_ended = true
        fail(reader, field, "ends after " .. left(reader) .. " of " .. length ..
            (RAW[field.type] and " bytes" or " characters"))
        return nil
    end
    local taken = reader.text:sub(reader.at, reader.at + length - 1)
    reader.at = reader.at + length
    return taken
end

local function read_digits(reader, field, length, decimal)
    local digits = take(reader, field, length)
    if digits and not digits:match(decimal and "^%d*$" or "^%x*$") then
        fail(reader, field, '"' .. digits .. '" is no number')
        return nil
    end
    return digits
end

-- Fails at the pair that is wrong, as the codec does.
local function read_hex(reader, field, count)
    local digits = {}
    for i = 1, count do
        digits[i] = read_digits(reader, field, 2)
        if not digits[i] then
            return nil
        end
    end
    return table.concat(digits)
end

local function read_plain(reader, field, length, value)
    value.text = take(reader, field, length)
    return value.text ~= nil
end

local function read_block(reader, field, length, value, scope)
    local escaped = take(reader, field, length)
    if not escaped then
        reader.only_ended = false
        return false
    end
    local bytes = unescape(escaped)
    if not bytes then
        return fail(reader, field, "is not escaped as a block must be")
    end
    value.hex = hex_of(bytes)
    if not field.inner or #bytes == 0 then
        return true
    end
    value.members = {}
    local inside = new_reader(bytes)
    if not read_fields(inside, field.inner.fields, value.members, scope) then
        reader.only_ended = false
        return fail(reader, field, inside.problem)
    end
    return true
end

local function read_chosen(reader, field, layout, value, scope)
    value.members = {}
    if not has(scope, "length") then
        return read_fields(reader, layout.fields, value.members, scope)
    end
    local taken = take(reader, field, number_of(scope, "length"))
    if not taken then
        return false
    end
    local inside = new_reader(taken)
    if not read_fields(inside, layout.fields, value.members, scope) and not inside.only_ended then
        return fail(reader, field, inside.problem)
    end
    return true
end

local function little_endian(bytes)
    local number = 0
    for i = #bytes, 1, -1 do
        number = number * 256 + bytes:byte(i)
    end
    return number
end

local function read_raw(reader, field, value)
    local length = RAW_WIDTH[field.type]
    if not length then
        length = field.size ~= 0 and field.times ~= "Fixed" and field.size or left(reader)
    end
    local bytes = take(reader, field, length)
    if not bytes then
        return false
    end
    if NUMBERS[field.type] then
        value.number = little_endian(bytes)
    elseif field.type == "RawAddress" then
        value.text = address_text(reversed_pairs(hex_of(bytes)))
    elseif field.type == "BigAddress" then
        value.text = address_text(hex_of(bytes))
    elseif field.type == "RawUuid" then
        value.text = uuid_text(hex_of(bytes))
    elseif field.type == "FixedText" then
        value.text = bytes:sub(1, (bytes:find("\0", 1, true) or #bytes + 1) - 1)
    elseif field.type == "RestText" then
        value.text = bytes
    else
        value.hex = hex_of(bytes)
    end
    return true
end

local readers = {
    Address = function(reader, field, value)
        local digits = read_hex(reader, field, 6)
        value.text = digits and address_text(digits)
        return digits ~= nil
    end,
    UuidFirst = function(reader, field, value)
        local digits = read_hex(reader, field, 16)
        value.text = digits and uuid_text(digits)
        return digits ~= nil
    end,
    UuidLast = function(reader, field, value)
        local digits = read_hex(reader, field, 16)
        value.text = digits and uuid_text(reversed_pairs(digits))
        return digits ~= nil
    end,
    Oob = function(reader, field, value)
        local digits = read_hex(reader, field, 16)
        value.hex = digits and digits:upper()
        return digits ~= nil
    end,
    HexBytes = function(reader, field, value, scope)
        local digits = read_hex(reader, field, number_of(scope, field.count))
        value.hex = digits and digits:upper()
        return digits ~= nil
    end,
    Character = function(reader, field, value) return read_plain(reader, field, 1, value) end,
    Counted = function(reader, field, value, scope)
        return read_plain(reader, field, number_of(scope, field.count), value)
    end,
    SizedBytes = function(reader, field, value, scope)
        local good = read_plain(reader, field, number_of(scope, field.count), value)
        value.hex = good and hex_of(value.text)
        return good
    end,
    Text = function(reader, field, value) return read_plain(reader, field, left(reader), value) end,
    NulText = function(reader, field, value)
        local nul = reader.text:find("\0", reader.at, true)
        local good = read_plain(reader, field, nul and nul - reader.at + 1 or left(reader) + 1, value)
        value.text = good and value.text:sub(1, -2)
        return good
    end,
    Block = function(reader, field, value, scope)
        local digits = read_digits(reader, field, 4)
        return digits ~= nil and read_block(reader, field, tonumber(digits, 16), value, scope)
    end,
    ShortBlock = function(reader, field, value, scope)
        return read_block(reader, field, number_of(scope, field.count), value, scope)
    end,
    Group = function(reader, field, value, scope)
        value.members = {}
        return read_fields(reader, field.inner.fields, value.members, scope)
    end,
    Choice = function(reader, field, value, scope)
        local layout = chosen(field, scope)
        if not layout then
            return fail(reader, field, "of an unknown kind")
        end
        return read_chosen(reader, field, layout, value, scope)
    end,
}

local function read_one(reader, field, value, scope)
    if NUMBERS[field.type] and WIDTH[field.type] then
        local decimal = field.type == "Decimal"
        local digits = read_digits(reader, field, WIDTH[field.type], decimal)
        value.number = digits and tonumber(digits, decimal and 10 or 16)
        return digits ~= nil
    end
    local read = readers[field.type]
    if read then
        return read(reader, field, value, scope)
    end
    return read_raw(reader, field, value)
end

local function read_list(reader, field, value, scope)
    value.members = {}
    local times = field.times == "Fixed" and field.size or field.times == "Counted" and
        number_of(scope, field.count) or 0
    while (field.times == "ToEnd" and left(reader) > 0) or (field.times ~= "ToEnd" and #value.members < times) do
        local item = { field = field, in_list = true }
        if not read_one(reader, field, item, scope) then
            return false
        end
        table.insert(value.members, item)
    end
    return true
end

read_fields = function(reader, fields, values, outer)
    local scope = { values = values, outer = outer }
    for _, field in ipairs(fields) do
        if applies(field, scope) then
            local value = { field = field }
            local read = field.times and read_list or read_one
            local good = read(reader, field, value, scope)
            if good or (value.members and #value.members > 0) then
                table.insert(values, value)
            end
            if not good then
                return false
            end
        end
    end
    return true
end

local function find_message(direction, text)
    for length = 2, 4 do
        local message = messages[direction][text:sub(1, length)]
        if message and #text >= length then
            return message
        end
    end
    return nil
end

local function decode(direction, text)
    local body = text
    if direction == "command" then
        if text:sub(1, 3) ~= "AT#" then
            return { direction = direction, text = text:sub(1, -3), problem = "does not begin with AT#" }
        end
        body = text:sub(4, -3)
    end
    local decoded = { direction = direction, values = {}, problem = "", surplus = "" }
    decoded.message = find_message(direction, body)
    if not decoded.message then
        decoded.text = body
        decoded.problem = "unknown tag"
        return decoded
    end
    local reader = new_reader(body:sub(#decoded.message.tag + 1))
    if read_fields(reader, decoded.message.fields, decoded.values, nil) then
        decoded.surplus = reader.text:sub(reader.at)
    else
        local minimum = decoded.message.minimum
        local enough = direction == "event" and reader.only_ended and minimum > 0 and #reader.text >= minimum
        decoded.problem = enough and "" or reader.problem
    end
    return decoded
end

-- ---- pieces: put together again ----

local PIECE = 255
local RECOGNISABLE = 3
local LONGEST_TEXT = 1024 * 1024

-- An event that a read has cut is recorded once more from its beginning, with the next read.
local function new_part_of(joiner, piece)
    local beginning = joiner.text:sub(1, PIECE)
    local is_repeated = #joiner.text >= RECOGNISABLE and piece:sub(1, #beginning) == beginning
    if joiner.repeated == 0 and (joiner.last_piece < PIECE or is_repeated) then
        joiner.repeated = #joiner.text
    end
    joiner.last_piece = #piece
    local count = math.min(joiner.repeated, #piece)
    local at = #joiner.text - joiner.repeated
    if joiner.text:sub(at + 1, at + count) ~= piece:sub(1, count) then
        joiner.repeated = 0
        return piece
    end
    joiner.repeated = joiner.repeated - count
    return piece:sub(count + 1)
end

-- The texts that end in this piece.
local function add_piece(joiner, piece)
    local is_event = joiner.direction == "event"
    joiner.text = joiner.text .. (is_event and new_part_of(joiner, piece) or piece)
    local mark = is_event and "\0" or "\r\n"
    local texts = {}
    local from = 1
    local at = joiner.text:find(mark, from, true)
    while at do
        if at > from or not is_event then
            table.insert(texts, joiner.text:sub(from, is_event and at - 1 or at + 1))
        end
        from = at + #mark
        at = joiner.text:find(mark, from, true)
    end
    joiner.text = joiner.text:sub(from)
    if #joiner.text > LONGEST_TEXT then
        joiner.text = ""
        joiner.repeated = 0
    end
    return texts
end

-- ---- the protocol in the analyser ----

local vym = Proto("vym", "vym commands and events")
local common = {
    direction = ProtoField.string("vym.direction", "Direction"),
    profile = ProtoField.string("vym.profile", "Profile"),
    name = ProtoField.string("vym.name", "Name"),
    tag = ProtoField.string("vym.tag", "Tag"),
    text = ProtoField.string("vym.text", "Text"),
    surplus = ProtoField.string("vym.surplus", "Surplus"),
    problem = ProtoField.string("vym.problem", "Problem"),
}
-- "vym.hfp.dial.number" and so on: with members of the same name in the choices of a value that are no numbers
-- all of them, it is text.
local fields_by_path = {}

local function note_fields(fields, path, kinds)
    for _, field in ipairs(fields) do
        local own = path .. "." .. field.name
        if field.inner then
            local layout = field.inner
            while layout do
                note_fields(layout.fields, own, kinds)
                layout = field.type == "Choice" and layout.next or nil
            end
        else
            local is_number = NUMBERS[field.type] == true
            local known = kinds[own]
            kinds[own] = { name = field.name, is_number = is_number and (not known or known.is_number) }
        end
    end
end

local function make_fields()
    local kinds = {}
    for _, by_tag in pairs(messages) do
        for _, message in pairs(by_tag) do
            note_fields(message.fields, "vym." .. message.profile .. "." .. message.name, kinds)
        end
    end
    local all = {}
    for path, kind in pairs(kinds) do
        local make = kind.is_number and ProtoField.uint32 or ProtoField.string
        fields_by_path[path] = { field = make(path, kind.name), is_number = kind.is_number }
        table.insert(all, fields_by_path[path].field)
    end
    for _, field in pairs(common) do
        table.insert(all, field)
    end
    vym.fields = all
end
make_fields()

local add_values

local function add_value(tree, range, value, path)
    if value.members then
        -- The members of a list are values of the same field.
        local is_list = value.field.times and not value.in_list
        local branch = #value.members > 0 and tree:add(range, value.field.name) or tree
        if is_list then
            for _, member in ipairs(value.members) do
                add_value(branch, range, member, path)
            end
        else
            add_values(branch, range, value.members, path)
        end
        return
    end
    local known = fields_by_path[path]
    if not known then
        return
    end
    local shown = value.number or value.hex or value.text
    tree:add(known.field, range, known.is_number and shown or tostring(shown))
end

add_values = function(tree, range, values, path)
    for _, value in ipairs(values) do
        add_value(tree, range, value, path .. "." .. value.field.name)
    end
end

local function title_of(decoded)
    local arrow = decoded.direction == "command" and "> " or "< "
    if not decoded.message then
        return arrow .. "?"
    end
    return arrow .. decoded.message.profile .. " " .. decoded.message.name
end

local function add_decoded(tree, range, decoded)
    local branch = tree:add(vym, range, title_of(decoded))
    branch:add(common.direction, range, decoded.direction)
    if decoded.message then
        branch:add(common.profile, range, decoded.message.profile)
        branch:add(common.name, range, decoded.message.name)
        branch:add(common.tag, range, decoded.message.tag)
        add_values(branch, range, decoded.values, "vym." .. decoded.message.profile .. "." .. decoded.message.name)
    else
        branch:add(common.text, range, decoded.text)
    end
    if decoded.surplus and #decoded.surplus > 0 then
        branch:add(common.surplus, range, decoded.surplus)
    end
    if #decoded.problem > 0 then
        branch:add(common.problem, range, decoded.problem)
    end
end

-- Of each frame with text: what it carries. Frames are looked at in order first, whatever is clicked later.
local texts_of_frame = {}
local joiners = {}

function vym.init()
    texts_of_frame = {}
    joiners = {}
    for _, direction in ipairs({ "command", "event" }) do
        joiners[direction] = { direction = direction, text = "", repeated = 0, last_piece = 0 }
    end
end

local function piece_of(packet)
    if packet:sub(1, 3) == "\x01\x01\xFC" and packet:byte(4) == #packet - 4 then
        return "command", packet:sub(5)
    elseif packet:sub(1, 2) == "\x04\xFF" and packet:byte(3) == #packet - 3 then
        return "event", packet:sub(4)
    end
    return nil
end

function vym.dissector(tvb, pinfo, tree)
    local packet = tvb:raw(0, tvb:len())
    local direction, piece = piece_of(packet)
    if not direction then
        return
    end
    if not texts_of_frame[pinfo.number] then
        texts_of_frame[pinfo.number] = add_piece(joiners[direction], piece)
    end
    local titles = {}
    for _, text in ipairs(texts_of_frame[pinfo.number]) do
        local decoded = decode(direction, text)
        add_decoded(tree, tvb(), decoded)
        table.insert(titles, title_of(decoded))
    end
    pinfo.cols.protocol = "vym"
    pinfo.cols.info = #titles > 0 and table.concat(titles, "  ") or "part of a longer text"
end

register_postdissector(vym)
