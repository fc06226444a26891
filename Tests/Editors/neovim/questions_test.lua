-- Questions at the screen of another Neovim, which waits for keys as it does in a terminal.
local harness = require("harness")

local tests = {}

local function start_editor()
  local plug_in = vim.fn.fnamemodify(debug.getinfo(1, "S").source:sub(2), ":p:h:h:h:h")
    .. "/Editors/neovim"
  local channel = vim.fn.jobstart({
    vim.v.progpath, "--embed", "-u", "NONE", "-i", "NONE", "-n",
    "--cmd", "set runtimepath^=" .. vim.fn.fnameescape(plug_in),
    "--cmd", "runtime plugin/nebgit.lua",
    "--cmd", ("lua require('nebgit').setup({ command = { %q } })"):format(vim.env.NEBSC),
    "--cmd", "cd " .. vim.fn.fnameescape(harness.root),
  }, { rpc = true })
  vim.fn.rpcrequest(channel, "nvim_ui_attach", 80, 24, {})
  return channel
end

-- Types the keys when the editor has the mode, and "rm" for a number and "r" for <Enter>.
local function type_in(channel, mode, keys)
  harness.wait(function()
    return vim.fn.rpcrequest(channel, "nvim_get_mode").mode == mode
  end, ("the mode '%s' before '%s'"):format(mode, keys))
  vim.fn.rpcrequest(channel, "nvim_input", keys)
end

-- A message after the list of the remotes made Neovim wait for <Enter>, which swallowed the answer
-- to the question for the name.
function tests.LeaveNoListBehind()
  harness.commit({ a = "1\n" }, "First")
  harness.remote = harness.folder .. "/remote.git"
  harness.run({ "git", "clone", "--quiet", "--bare", harness.root, harness.remote })
  harness.git("remote", "add", "first", harness.remote)
  harness.git("remote", "add", "second", harness.remote)
  local channel = start_editor()
  type_in(channel, "n", ":NEBGit fetch<CR>")
  type_in(channel, "rm", "2<CR>")
  harness.wait(function()
    return pcall(harness.git, "rev-parse", "--verify", "--quiet", "second/main")
  end, "the fetched branch")
  harness.equal("n", vim.fn.rpcrequest(channel, "nvim_get_mode").mode)
  vim.fn.rpcnotify(channel, "nvim_command", "qall!")
  harness.wait(function()
    return vim.fn.jobwait({ channel }, 0)[1] ~= -1
  end, "the end of the editor")
end

return tests
