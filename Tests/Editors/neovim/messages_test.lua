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

function tests.BlameInAWindowWithoutAFileSaysSo()
  harness.commit({ file = "1\n" })
  harness.open_status()
  vim.cmd("NEBGit blame")
  harness.wait_for_message("this window has no file")
end

return tests
