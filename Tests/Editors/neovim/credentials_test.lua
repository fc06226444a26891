-- Names and passwords that git needs for a server with authentication.
local harness = require("harness")

local tests = {}

-- A server that asks for basic authentication, writes what it gets to a file, and has no
-- repository.
local http_server = [==[
import http.server, sys
class Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        given = self.headers.get("Authorization")
        if given:
            open(sys.argv[1] + "/authorization", "w").write(given)
        self.send_response(404 if given else 401)
        if not given:
            self.send_header("WWW-Authenticate", 'Basic realm="test"')
        self.send_header("Content-Length", "0")
        self.end_headers()
    def log_message(self, *arguments):
        pass
server = http.server.HTTPServer(("127.0.0.1", 0), Handler)
print(server.server_port, flush=True)
server.serve_forever()
]==]

-- Starts the server and calls use(), then ends it. The remote "origin" is at the server.
local function with_server(use)
  local program, port = harness.folder .. "/server.py", nil
  vim.fn.writefile(vim.split(http_server, "\n"), program)
  local job = vim.fn.jobstart({ "python3", program, harness.folder }, {
    on_stdout = function(_, lines)
      port = port or tonumber(lines[1])
    end,
  })
  local ok, problem = pcall(function()
    harness.wait(function()
      return port
    end, "the port of the server")
    harness.git("remote", "add", "origin", ("http://127.0.0.1:%d/demo.git"):format(port))
    harness.enter()
    use()
  end)
  vim.fn.jobstop(job)
  assert(ok, problem)
end

function tests.NameAndPasswordReachTheServer()
  with_server(function()
    harness.answers = { "ann" }
    vim.api.nvim_input("s3cret<CR>")
    vim.cmd("NEBGit fetch")
    local path = harness.folder .. "/authorization"
    local given = harness.wait(function()
      return vim.fn.filereadable(path) == 1 and vim.fn.readfile(path)[1]
    end, "the authorization")
    harness.equal("Basic " .. require("nebgit.base64").encode("ann:s3cret"), given)
    harness.contains("Username", harness.questions[1])
    harness.equal(nil, harness.messages():find("s3cret", 1, true))
  end)
end

function tests.DeclinedQuestionFailsTheRequest()
  with_server(function()
    harness.answers = { false }
    vim.cmd("NEBGit fetch")
    harness.wait(function()
      return #vim.split(harness.messages(), "nebgit: ") > 2
    end, "the failure")
    harness.equal(0, vim.fn.filereadable(harness.folder .. "/authorization"))
  end)
end

return tests
