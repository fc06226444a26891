-- What tests share: a repository of their own, waiting, and checks.
local M = {}

local uv = vim.loop

-- The longest wait for something that must happen, in milliseconds. Only a test that fails waits so
-- long; NEB_WAIT_LIMIT shortens it.
local limit = tonumber(vim.env.NEB_WAIT_LIMIT) or 60000

local shown = {}

-- Neovim's own function to show messages, which set_up() replaces.
M.notify = vim.notify

-- Makes git and the editor independent of the user.
function M.prepare_environment()
  local variables = {
    LC_ALL = "C.UTF-8",
    HOME = "/nonexistent",
    GIT_CONFIG_GLOBAL = "/dev/null",
    GIT_CONFIG_NOSYSTEM = "1",
    GIT_AUTHOR_NAME = "Ann Example",
    GIT_AUTHOR_EMAIL = "ann@example.org",
    GIT_COMMITTER_NAME = "Ann Example",
    GIT_COMMITTER_EMAIL = "ann@example.org",
    GIT_AUTHOR_DATE = "2026-03-04T05:06:07 +0000",
    GIT_COMMITTER_DATE = "2026-03-04T05:06:07 +0000",
  }
  for name, value in pairs(variables) do
    vim.env[name] = value
  end
  vim.env.NVIM_LOG_FILE = "/dev/null"
end

-- Runs a program with the text as its standard input, and returns its output. Raises an error if it
-- fails.
function M.run(arguments, input)
  local output = input and vim.fn.system(arguments, input) or vim.fn.system(arguments)
  if vim.v.shell_error ~= 0 then
    error(("%s: %s"):format(table.concat(arguments, " "), output), 2)
  end
  return output
end

-- Runs git in the repository of the test and returns its output without the last line end.
function M.git(...)
  return (M.run({ "git", "-C", M.root, ... }):gsub("\n$", ""))
end

-- Returns the path, relative to the repository or absolute, as an absolute one.
function M.absolute(path)
  return path:sub(1, 1) == "/" and path or M.root .. "/" .. path
end

-- Writes a file, with its folders; the path is relative to the repository or absolute.
function M.write(path, content)
  local full = M.absolute(path)
  vim.fn.mkdir(vim.fn.fnamemodify(full, ":h"), "p")
  local file = assert(io.open(full, "wb"))
  file:write(content)
  file:close()
end

-- Writes a file that can be run; the path is as of write().
function M.write_program(path, content)
  M.write(path, content)
  uv.fs_chmod(M.absolute(path), 448)
end

-- Returns the content of a file of the repository; nil while it does not exist.
function M.read(path)
  local file = io.open(M.root .. "/" .. path, "rb")
  if not file then
    return nil
  end
  local content = file:read("*a")
  file:close()
  return content
end

-- Waits until a file of the repository contains the text. git replaces a file by removing it and
-- creating it, so it may be missing for a moment.
function M.wait_for_content(path, text)
  M.wait(function()
    local file = io.open(M.root .. "/" .. path, "rb")
    local content = file and file:read("*a")
    if file then
      file:close()
    end
    return content and content:find(text, 1, true)
  end, ("'%s' in the file '%s'"):format(text, path))
end

-- Writes files, given by path, and commits them.
function M.commit(files, message)
  for path, content in pairs(files) do
    M.write(path, content)
  end
  M.git("add", "--all")
  M.git("commit", "--quiet", "--allow-empty", "--message", message or "Change files")
end

-- Waits until condition() returns a true value, and returns it. what, a text or a function that
-- returns one after the wait, says what did not happen.
function M.wait(condition, what)
  local value
  vim.wait(limit, function()
    value = condition()
    return value
  end, 5)
  if not value then
    local text = type(what) == "function" and what() or what or "a condition"
    error("timed out waiting for " .. text, 2)
  end
  return value
end

-- Calls start(callback), waits for the callback, and returns its arguments.
function M.await(start)
  local results
  start(function(...)
    results = { n = select("#", ...), ... }
  end)
  M.wait(function()
    return results
  end, "a callback")
  return unpack(results, 1, results.n)
end

-- Fails unless the values are equal, tables by content.
function M.equal(expected, actual)
  if not vim.deep_equal(expected, actual) then
    local text = "expected: %s\nactual:   %s"
    error(text:format(vim.inspect(expected), vim.inspect(actual)), 2)
  end
end

-- Fails unless the text contains the part.
function M.contains(part, text)
  if not tostring(text):find(part, 1, true) then
    error(("expected a text with: %s\nactual: %s"):format(part, vim.inspect(text)), 2)
  end
end

-- Changes the settings of the plug-in; the program of the test is the server.
function M.configure(settings)
  settings.command = { vim.env.NEBSC or "nebsc" }
  require("nebgit").setup(settings)
end

-- Makes the repository the current folder.
function M.enter()
  vim.cmd("cd " .. vim.fn.fnameescape(M.root))
end

-- Opens a file of the repository in the window.
function M.edit(path)
  vim.cmd("edit " .. vim.fn.fnameescape(M.root .. "/" .. path))
  return vim.api.nvim_get_current_buf()
end

-- Returns the lines of a buffer, by default the current one.
function M.lines(buffer)
  return vim.api.nvim_buf_get_lines(buffer or 0, 0, -1, true)
end

-- Presses keys in the window, as if typed.
function M.press(keys)
  vim.api.nvim_feedkeys(vim.api.nvim_replace_termcodes(keys, true, false, true), "xm", false)
end

-- Puts the cursor on the first line that contains the text. Waits until there is one.
function M.go_to(text)
  M.wait(function()
    for number, line in ipairs(M.lines()) do
      if line:find(text, 1, true) then
        vim.api.nvim_win_set_cursor(0, { number, 0 })
        return true
      end
    end
  end, function()
    return ("a line with '%s' in:\n%s"):format(text, table.concat(M.lines(), "\n"))
  end)
end

-- Returns all messages since the beginning of the test as one text.
function M.messages()
  return table.concat(shown, "\n")
end

-- Waits for a message with the text.
function M.wait_for_message(text)
  M.wait(function()
    return M.messages():find(text, 1, true)
  end, function()
    return ("the message '%s' after: %s"):format(text, M.messages())
  end)
end

-- The answers to the next questions: values, or functions of the items or settings.
M.answers = {}

local function answer(question)
  local reply = table.remove(M.answers, 1)
  if reply == nil then
    error("an unexpected question: " .. vim.inspect(question))
  end
  return type(reply) == "function" and reply(question) or reply
end

local function record_questions()
  M.answers, M.questions = {}, {}
  vim.ui.select = function(items, settings, callback)
    table.insert(M.questions, settings.prompt)
    local names = vim.tbl_map(settings.format_item or tostring, items)
    local reply = answer({ prompt = settings.prompt, items = names })
    for index, name in ipairs(names) do
      if name == reply then
        return callback(items[index], index)
      end
    end
    callback(nil)
  end
  vim.ui.input = function(settings, callback)
    table.insert(M.questions, settings.prompt)
    callback(answer(settings) or nil)
  end
end

-- Creates the repository M.root with the branch main and no commit.
function M.set_up()
  shown = {}
  vim.notify = function(text)
    table.insert(shown, text)
  end
  record_questions()
  M.folder = uv.fs_realpath(uv.fs_mkdtemp((vim.env.TMPDIR or "/tmp") .. "/nebgit-XXXXXX"))
  vim.env.GIT_CEILING_DIRECTORIES = M.folder
  M.root = M.folder .. "/repository"
  M.run({ "git", "init", "--quiet", "--initial-branch=main", M.root })
  M.configure({})
end

-- Closes everything that the test opened, and removes its folder.
function M.tear_down()
  vim.cmd("silent! tabonly! | silent! only! | silent! %bwipeout!")
  require("nebgit.server").restart()
  M.wait(function()
    return not require("nebgit.server").pid()
  end, "the end of the server")
  vim.fn.delete(M.folder, "rf")
end

-- Opens the status of the repository and waits until it is shown.
function M.open_status()
  local window = require("nebgit.status.window")
  M.enter()
  vim.cmd("NEBGit status")
  M.wait(function()
    return window.state() and window.state().has_loaded
  end, "the status window")
end

return M
