#!/usr/bin/env python3
"""client.py [FOLDER [SIZE]] - prints the log of the repository that contains FOLDER, through "nebsc serve", in pages
of SIZE commits (50)."""
import json
import os
import subprocess
import sys

KEY = "NEBSourceControlOperation{}Key".format


class Server:
    """Runs "nebsc serve" and sends it requests, one at a time."""

    def __init__(self):
        self.process = subprocess.Popen(["nebsc", "serve"], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE)
        self.last_id = 0

    def send(self, **message):
        content = json.dumps({"jsonrpc": "2.0", **message}).encode()
        self.process.stdin.write(b"Content-Length: %d\r\n\r\n" % len(content) + content)
        self.process.stdin.flush()

    def call(self, method, params=None):
        self.last_id += 1
        self.send(id=self.last_id, method=method, params=params)
        length = 0
        while line := self.process.stdout.readline().strip():
            name, _, value = line.partition(b":")
            length = int(value) if name.lower() == b"content-length" else length
        response = json.loads(self.process.stdout.read(length) or
                            sys.exit("client.py: the server closed the connection"))
        if "error" in response:
            sys.exit(f"client.py: {response['error']['message']}")
        return response["result"]


server = Server()
server.call("initialize", {})
page = server.call("sourceControl/open", {
    "request": {
        "type": 18,  # log
        "sourceTree": {"location": os.path.abspath(*sys.argv[1:2] or ".")},
    },
    "pageSize": int((sys.argv[2:3] or ["50"])[0]),
})
while True:
    for commit in page["records"]:
        print(commit[KEY("Revision")], commit[KEY("Date")], commit[KEY("Author")],
              commit[KEY("Message")].split("\n")[0], sep="  ")
    if not page["cursor"]:
        break
    page = server.call("sourceControl/next", {"cursor": page["cursor"]})
if error := page["outcome"]["error"]:
    sys.exit(f"client.py: {error['localizedDescription']}")
server.call("shutdown")
server.send(method="exit")
sys.exit(server.process.wait())
