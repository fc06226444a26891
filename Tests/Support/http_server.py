#!/usr/bin/env python3
"""Serves the bare repositories of a folder with git-http-backend(1), with basic authentication.

usage: http_server.py FOLDER
The file "credentials" of the folder has the name and the password: "ann:secret". Prints the port,
and then serves on the loopback address until it is killed. During each request that is answered,
it looks for the password in the command lines and environments of all processes; it names the
places in the file "seen" of the folder. The file "requests" gets the line and the header of each
request. As a proxy, the server answers for all hosts.
"""
import base64
import http.server
import os
import pathlib
import subprocess
import sys
import urllib.parse

FOLDER = pathlib.Path(sys.argv[1])
CREDENTIALS = (FOLDER / "credentials").read_bytes()
USER, PASSWORD = CREDENTIALS.split(b":")
EXPECTED = "Basic " + base64.b64encode(CREDENTIALS).decode()


def places_of_password():
    for process in pathlib.Path("/proc").glob("[0-9]*"):
        for place in process / "cmdline", process / "environ":
            try:
                if PASSWORD in place.read_bytes():
                    yield place.name
            except OSError:
                pass  # the process has ended, or belongs to another user


class Handler(http.server.BaseHTTPRequestHandler):
    def serve(self):
        with open(FOLDER / "requests", "a") as requests:
            requests.write(f"{self.requestline}\n{self.headers}")
        body = self.rfile.read(int(self.headers.get("Content-Length") or 0))
        if self.headers.get("Authorization") != EXPECTED:
            self.send_response(401)
            self.send_header("WWW-Authenticate", 'Basic realm="demo"')
            self.send_header("Content-Length", "0")
            self.end_headers()
            return
        with open(FOLDER / "seen", "a") as seen:
            seen.writelines(places_of_password())
        url = urllib.parse.urlsplit(self.path)
        environment = dict(
            os.environ, GIT_PROJECT_ROOT=str(FOLDER), GIT_HTTP_EXPORT_ALL="1", PATH_INFO=url.path,
            QUERY_STRING=url.query, REQUEST_METHOD=self.command, REMOTE_USER=USER.decode(),
            CONTENT_TYPE=self.headers.get("Content-Type", ""), CONTENT_LENGTH=str(len(body)),
            HTTP_CONTENT_ENCODING=self.headers.get("Content-Encoding", ""),
            GIT_PROTOCOL=self.headers.get("Git-Protocol", ""))
        reply = subprocess.run(["git", "http-backend"], input=body, env=environment,
                               stdout=subprocess.PIPE, check=True).stdout
        head, _, content = reply.partition(b"\r\n\r\n")
        fields = dict(line.decode().split(": ", 1) for line in head.split(b"\r\n"))
        self.send_response(int(fields.pop("Status", "200").split()[0]))
        for name, value in fields.items():
            self.send_header(name, value)
        self.send_header("Content-Length", str(len(content)))
        self.end_headers()
        self.wfile.write(content)

    do_GET = do_POST = serve

    def log_message(self, *arguments):
        pass


server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
print(server.server_port, flush=True)
server.serve_forever()
