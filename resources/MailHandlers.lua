-- What an app may ask of the user's mail program. Each global function is a handler that is called by its name, with
-- texts, whole numbers and booleans. composeMail and openMail are the desktop's, and say themselves what went wrong.

local errAECoercionFail = -1700

local function fail(message)
    error({ number = errAECoercionFail, message = message })
end

local function text(value)
    return value == nil and "" or tostring(value)
end

-- In time that grows with the text only, however many spaces are in it.
local function trimmed(line)
    local first = line:find("%S")
    if not first then
        return ""
    end
    local last = #line
    while line:find("^%s", last) do
        last = last - 1
    end
    return line:sub(first, last)
end

-- "Ada <ada@example.org>" is known by what stands in the brackets.
local function addressIn(piece)
    local opening = piece:find("<", 1, true)
    local closing = opening and piece:find(">", opening, true)
    return trimmed(closing and piece:sub(opening + 1, closing - 1) or piece)
end

-- Separated by commas, semicolons or line breaks. A name in quotes may hold any of them.
local function addressesIn(list)
    local addresses = {}
    for piece in list:gsub('"[^"]*"', ""):gmatch("[^,;\r\n]+") do
        local address = addressIn(piece)
        if address ~= "" then
            if not address:find("@", 2, true) or address:find("[%s%c]") or address:find("-", 1, true) == 1 then
                fail("not a mail address: " .. address)
            end
            addresses[#addresses + 1] = address
        end
    end
    return addresses
end

-- One a line: names of files may hold everything else.
local function linesIn(list)
    local lines = {}
    for line in list:gmatch("[^\r\n]+") do
        lines[#lines + 1] = line
    end
    return lines
end

-- Shows a new message in the user's mail program, to be read over and sent there. Attachments are addresses of files
-- ("file:///...") or absolute paths.
function composeMessage(recipients, subject, body, attachments)
    composeMail(addressesIn(text(recipients)), text(subject), text(body), linesIn(text(attachments)))
end

-- Shows a message that the user has, by its address ("mid:...", RFC 2392) or its bare Message-ID.
function openMessage(message)
    local address = trimmed(text(message))
    if address:sub(1, 4):lower() ~= "mid:" then
        local id = address:match("^<(.*)>$") or address
        if not id:find("@", 2, true) or id:find("[%s%c<>]") then
            fail("not the address of a message: " .. address)
        end
        address = "mid:" .. id:gsub("[^%w%-%._~@!$&'*+=]", function(byte)
            return ("%%%02X"):format(byte:byte())
        end)
    end
    openMail(address)
end
