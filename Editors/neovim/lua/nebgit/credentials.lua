-- Asks for passwords, passphrases and the like that git or ssh needs, one after the other.
local M = {}

local server = require("nebgit.server")

-- The questions that wait, the first of which is shown: {id, params, reply}.
local queue = {}

local function ask_openly(params, callback)
  if params.kind == "hostKey" then
    vim.ui.select({ "No", "Yes" }, { prompt = params.prompt }, function(choice)
      callback(choice and choice:lower())
    end)
  else
    vim.ui.input({ prompt = params.prompt }, callback)
  end
end

-- What inputsecret() returns after <Esc>; an empty answer is an answer.
local declined = "\1declined\1"

local function ask_secretly(params, callback)
  local ok, value = pcall(vim.fn.inputsecret, { prompt = params.prompt, cancelreturn = declined })
  callback(ok and value ~= declined and value or nil)
end

local function ask_next()
  local question = queue[1]
  if not question or question.is_shown then
    return
  end
  question.is_shown = true
  local is_open = question.params.kind == "name" or question.params.kind == "hostKey"
  local ask = is_open and ask_openly or ask_secretly
  ask(question.params, function(value)
    if not question.is_withdrawn then
      question.reply(value and { value = value } or nil)
    end
    table.remove(queue, 1)
    vim.schedule(ask_next)
  end)
end

server.on_request("sourceControl/credentials", function(params, reply, id)
  table.insert(queue, { id = id, params = params, reply = reply })
  if #queue == 1 then
    vim.schedule(ask_next)
  end
end)

-- The server withdraws a question when its request has ended.
server.on_notification("$/cancelRequest", function(params)
  for index, question in ipairs(queue) do
    if question.id == params.id and question.is_shown then
      question.is_withdrawn = true
      vim.api.nvim_input("<Esc>")
      return
    elseif question.id == params.id then
      table.remove(queue, index)
      return
    end
  end
end)

return M
