-- Asks for passwords, passphrases and the like that git or ssh needs, one after the other.
local M = {}

local messages = require("nebgit.messages")
local questions = require("nebgit.questions")
local server = require("nebgit.server")

-- The questions that wait, the first of which is shown: {id, params, reply, process}.
local queue = {}
-- Whether a function that asks has not returned; it may handle events meanwhile.
local is_asking = false

local function ask_openly(params, callback)
  if params.kind == "hostKey" then
    questions.select({ "No", "Yes" }, { prompt = params.prompt }, function(choice)
      callback(choice and choice:lower())
    end)
  else
    questions.input({ prompt = params.prompt }, callback)
  end
end

local ask_next

-- Ends the question with the value, or nil if it is declined. Does nothing the second time.
local function finish(question, value)
  for index, other in ipairs(queue) do
    if other == question then
      table.remove(queue, index)
      if not question.is_withdrawn then
        question.reply(value and { value = value } or nil)
      end
      return vim.schedule(ask_next)
    end
  end
end

function ask_next()
  local question = queue[1]
  if not question or question.is_shown or is_asking then
    return
  end
  question.is_shown = true
  local is_open = question.params.kind == "name" or question.params.kind == "hostKey"
  is_asking = true
  local ok, problem = pcall(is_open and ask_openly or questions.secret, question.params, function(value)
    finish(question, value)
  end)
  is_asking = false
  if not ok then
    messages.error(problem)
    finish(question, nil)
  end
  vim.schedule(ask_next)
end

-- Ends the questions that is_meant(question) chooses without a reply.
local function withdraw(is_meant)
  for _, question in ipairs(vim.tbl_filter(is_meant, queue)) do
    question.is_withdrawn = true
    if question.is_shown and is_asking then
      vim.api.nvim_input("<Esc>")
    end
    finish(question, nil)
  end
end

server.on_request("sourceControl/credentials", function(params, reply, id, process)
  table.insert(queue, { id = id, params = params, reply = reply, process = process })
  vim.schedule(ask_next)
end)

-- The server withdraws a question when its request has ended.
server.on_notification("$/cancelRequest", function(params, process)
  withdraw(function(question)
    return question.process == process and question.id == params.id
  end)
end)

server.on_end(function(process)
  withdraw(function(question)
    return question.process == process
  end)
end)

return M
