#!/usr/bin/env python3
"""client.py [FOLDER]: prints the latest commits of a folder's repository, asked of "nebsc serve"."""
import json
import os
import subprocess
import sys

KEY = "NEBSourceControlOperation{}Key".format


class Server:
    """One "nebsc serve", talked with over its standard input and output, a request at a time."""

    def __init__(self):
        self.process = subprocess.Popen(["nebsc", "serve"], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE)
        self.last_id = 0

    def send(self, **message):
        content = json.dumps({"jsonrpc": "2.0", **message}).encode()
        self.process.stdin.write(b"Content-Length: %d\r\n\r\n" % len(content) + content)
        self.process.stdin.flush()

    def ask(self, method, params=None):
        self.last_id += 1
        self.send(id=self.last_id, method=method, params=params)
        length = 0
        while line := self.process.stdout.readline().strip():
            name, _, value = line.partition(b":")
            length = int(value) if name.lower() == b"content-length" else length
        answer = json.loads(self.process.stdout.read(length) or
                            sys.exit("client.py: the server has gone"))
        if "error" in answer:
            sys.exit(f"client.py: {answer['error']['message']}")
        return answer["result"]


server = Server()
server.ask("initialize", {})
outcome = server.ask("sourceControl/perform", {
    "type": 18,
    "sourceTree": {"location": os.path.abspath(*sys.argv[1:2] or ".")},
    "options": {"NEBSourceControlRequestOptionLogOutputLimit": 20},
})
if outcome["error"]:
    sys.exit(f"client.py: {outcome['error']['localizedDescription']}")
for commit in outcome["result"]:
    print(commit[KEY("Revision")], commit[KEY("Date")], commit[KEY("Author")],
          commit[KEY("Message")].split("\n")[0], sep="  ")
server.ask("shutdown")
server.send(method="exit")
sys.exit(server.process.wait())
