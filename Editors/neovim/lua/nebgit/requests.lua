-- Source-control requests: short names for the members of the JSON, and bytes for names that are
-- not UTF-8.
local M = {}

local base64 = require("nebgit.base64")
local server = require("nebgit.server")
local trust = require("nebgit.trust")
local utf8 = require("nebgit.utf8")

-- The request types that are used, see docs/requests.md.
M.types = {
  create_branch = 1,
  checkout = 14,
  list_remotes = 24,
  current_branch = 26,
  create_repository = 27,
  clone = 29,
  fetch = 37,
  state = 1000,
  history = 1001,
  content = 1002,
  annotation = 1003,
  changes = 1004,
  stage = 1005,
  unstage = 1006,
  discard = 1007,
  references = 1008,
  stash = 1009,
  unfinished = 1010,
  commit = 1011,
  publish = 1012,
  integrate = 1013,
  pick = 1014,
  settings = 1018,
  finish = 1020,
}

-- Types that change the repository or the working copy, for which the editor's exit waits.
local changing = {}
for _, name in ipairs({
  "create_branch", "checkout", "create_repository", "clone", "stage", "unstage", "discard",
  "stash", "commit", "publish", "integrate", "pick", "finish",
}) do
  changing[M.types[name]] = true
end

-- Types whose repository does not exist yet.
local creating = { create_repository = true, clone = true }

local last_token = 0

-- Returns the JSON value for a text, which may be any bytes.
function M.encoded(value)
  if type(value) == "string" and not utf8.is_valid(value) then
    return { base64 = base64.encode(value) }
  elseif type(value) == "table" then
    return vim.tbl_map(M.encoded, value)
  end
  return value
end

-- Short names of the keys of records.
local short_names = setmetatable({}, {
  __index = function(names, key)
    local name = key
    if type(key) == "string" then
      name = key:match("^NEBSourceControlOperation(.*)Key$") or key
    end
    names[key] = name
    return name
  end,
})

-- Returns the JSON value with short keys in its objects, "Path" instead of
-- "NEBSourceControlOperationPathKey". Of a name that is not UTF-8 it has the bytes.
local function decoded(value)
  if type(value) ~= "table" then
    return value
  elseif value.base64 then
    return base64.decode(value.base64)
  end
  local result, bytes = {}, {}
  for key, item in pairs(value) do
    local name = short_names[key]
    if type(item) == "table" and item.base64 and type(name) == "string" then
      bytes[(name:gsub("Bytes$", ""))] = decoded(item)
    else
      result[name] = decoded(item)
    end
  end
  for name, item in pairs(bytes) do
    result[name] = item
  end
  return result
end

-- Returns the failure of an outcome; nil if it has no error. Members: `class`, `message`, `advice`
-- and `text` (may be nil), `files`.
local function failure_of(outcome)
  local problem = outcome.error
  if not problem then
    return nil
  end
  local text = problem.text and vim.trim(problem.text)
  return {
    class = problem.class or "refused",
    message = problem.localizedDescription or text or "the request failed",
    advice = problem.localizedRecoverySuggestion,
    text = text,
    files = problem.files or {},
  }
end

local function encoded_options(options)
  local result = vim.empty_dict()
  for name, value in pairs(options or {}) do
    result["NEBSourceControlRequestOption" .. name] = M.encoded(value)
  end
  return result
end

-- Returns the params of a request, see M.perform().
local function params_of(name, root, details)
  local place = { location = M.encoded(root) }
  return {
    type = M.types[name],
    sourceTree = place,
    repositoryToAuthenticate = details.authenticates and place or nil,
    files = details.files and M.encoded(details.files),
    destination = M.encoded(details.destination),
    startingRevision = M.encoded(details.from),
    endingRevision = M.encoded(details.to),
    remote = details.remote,
    limits = details.limits,
    options = encoded_options(details.options),
    background = details.background and server.can("background") or nil,
    trust = not creating[name] and trust.is_inspected(root) and "inspect" or nil,
  }
end

-- Carries out a request in the working copy at root. Members of details, all optional: `files`,
-- `destination`, `from`, `to`, `options` (names without prefix), `limits`, `remote`,
-- `authenticates`, `background`, and `records`, a function that receives lists of records while
-- git runs. Texts may be any bytes. Calls callback(failure, records), failure nil after success.
-- Returns a function that cancels the request.
function M.perform(name, root, details, callback)
  local params, settings = params_of(name, root, details), { changes = changing[M.types[name]] }
  if details.records then
    last_token = last_token + 1
    params.partialResultToken = last_token
    settings.token = last_token
    settings.progress = function(value)
      details.records(decoded(value.records or {}))
    end
  end
  return server.request("sourceControl/perform", params, function(failure, outcome)
    if failure then
      return callback(failure, {})
    end
    callback(failure_of(outcome), decoded(outcome.result or {}))
  end, settings)
end

-- A list that is read in pages.
local Pages = {}
Pages.__index = Pages

-- Returns a list of the request's records in pages of so many, of which none has been read.
function M.pages(name, root, details, size)
  return setmetatable({ params = params_of(name, root, details), size = size }, Pages)
end

-- Returns whether the cursor is one of the server that runs; after a restart its name may be that
-- of another list.
function Pages:has_cursor()
  return self.cursor ~= nil and self.server == server.pid()
end

function Pages:handle(failure, page, callback)
  self.is_reading = false
  if self.cursor and failure and failure.class == "server" then
    -- The next call finds that the cursor is closed, and another server goes on.
    return callback(failure, {}, false)
  end
  local was_closed = self.cursor and failure and failure.code == -32602
  page = page or {}
  self.cursor, self.server = page.cursor, server.pid()
  self.is_finished = not page.cursor
  if was_closed then
    failure = { class = "cursor-closed", message = failure.message }
  end
  failure = failure or page.outcome and failure_of(page.outcome)
  callback(failure, decoded(page.records or {}), self.is_finished, page.outcome)
end

-- Reads the next page unless one is being read or there is no more. Calls
-- callback(failure, records, is_last, outcome), the outcome nil before the last page, as in
-- docs/json.md. The failure has the class "cursor-closed" if the server has
-- forgotten the list, because it was idle for long or the server was started again.
function Pages:next(callback)
  if self.is_reading or self.is_finished then
    return
  end
  self.is_reading = true
  if self.cursor and not self:has_cursor() then
    local failure = { code = -32602, message = "the server was started again" }
    return vim.schedule(function()
      self:handle(failure, nil, callback)
    end)
  end
  local method, params = "sourceControl/next", { cursor = self.cursor }
  if not self.cursor then
    method, params = "sourceControl/open", { request = self.params, pageSize = self.size }
  end
  self.cancel = server.request(method, params, function(failure, page)
    self:handle(failure, page, callback)
  end)
end

-- Ends the list; git, which waits to print more, exits.
function Pages:close()
  if self.is_reading and self.cancel then
    self.cancel()
  elseif self:has_cursor() then
    server.request("sourceControl/close", { cursor = self.cursor }, function() end)
  end
  self.is_finished = true
end

return M
