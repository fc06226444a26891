-- Messages for the user, and the advice after failures.
local harness = require("harness")
local messages = require("nebgit.messages")

local tests = {}

function tests.AdviceIsForClassesOfErrors()
  local folder = vim.fn.fnamemodify(debug.getinfo(1, "S").source:sub(2), ":p:h")
  local page = table.concat(vim.fn.readfile(folder .. "/../../../docs/errors.md"), "\n")
  for class in pairs(require("nebgit.advice")) do
    harness.contains(("\n| `%s` |"):format(class), page)
  end
end

function tests.AdviceNamesKeys()
  harness.commit({ file = "1\n" })
  harness.enter()
  vim.cmd("NEBGit continue")
  harness.wait_for_message("to continue.\nThe status shows what is unfinished.")
end

function tests.AdviceNamesKeysThatTheStatusHas()
  local no_keys = { ["and"] = true, ["in"] = true, the = true, status = true }
  local keys = {}
  for _, text in pairs(require("nebgit.advice")) do
    for remark in text:gmatch("%(([^:)]+)%)") do
      for word in remark:gmatch("%a+") do
        keys[word] = not no_keys[word] or nil
      end
    end
  end
  harness.equal({ true, true }, { keys.s, keys.ra })
  harness.commit({ file = "1\n" })
  harness.open_status()
  for key in pairs(keys) do
    harness.equal({ key, true }, { key, vim.fn.maparg(key, "n", false, true).buffer == 1 })
  end
end

function tests.AdviceToReadTheOutputShowsIt()
  local failure = { class = "remote-refused", message = "Refused.", text = "why", advice = "Read." }
  harness.equal("Refused.\nwhy\nRead.", messages.text_of(failure))
end

-- Neovim would print each line as an error of its own, and wait for a key after each.
function tests.ErrorOfSeveralLinesIsOneMessage()
  vim.notify = harness.notify
  local echo, echoed = vim.api.nvim_echo, {}
  vim.api.nvim_echo = function(chunks, in_history)
    table.insert(echoed, { chunks, in_history })
  end
  local ok, problem = pcall(messages.error, "first\nsecond")
  vim.api.nvim_echo = echo
  harness.equal({ true }, { ok, problem })
  harness.equal({ { { { "nebgit: first\nsecond", "ErrorMsg" } }, true } }, echoed)
end

function tests.ErrorGoesToThePlugInThatShowsMessages()
  local former, shown = vim.notify, {}
  vim.notify = setmetatable({}, { __call = function(_, text)
    table.insert(shown, text)
  end })
  local ok, problem = pcall(messages.error, "text")
  vim.notify = former
  harness.equal({ true }, { ok, problem })
  harness.equal({ "nebgit: text" }, shown)
end

function tests.BlameInAWindowWithoutAFileSaysSo()
  harness.commit({ file = "1\n" })
  harness.open_status()
  vim.cmd("NEBGit blame")
  harness.wait_for_message("this window has no file")
end

return tests
