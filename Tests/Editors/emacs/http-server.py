#!/usr/bin/env python3
"""http-server.py FOLDER - serves the repositories in FOLDER to "ann" with the password "secret".

Prints the port, then serves requests with git-http-backend(1) until it is killed.
"""
import base64
import os
import subprocess
import sys
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

EXPECTED = "Basic " + base64.b64encode(b"ann:secret").decode()


class Handler(BaseHTTPRequestHandler):
    def do_GET(self):
        if self.headers.get("Authorization") != EXPECTED:
            self.send_response(401)
            self.send_header("WWW-Authenticate", 'Basic realm="test"')
            self.send_header("Content-Length", "0")
            self.end_headers()
            return
        path, _, query = self.path.partition("?")
        length = int(self.headers.get("Content-Length") or 0)
        environment = {**os.environ, "GIT_PROJECT_ROOT": sys.argv[1], "GIT_HTTP_EXPORT_ALL": "1",
                       "REQUEST_METHOD": self.command, "PATH_INFO": path, "QUERY_STRING": query,
                       "CONTENT_TYPE": self.headers.get("Content-Type", ""),
                       "CONTENT_LENGTH": str(length), "REMOTE_USER": "ann"}
        output = subprocess.run(["git", "http-backend"], input=self.rfile.read(length),
                                env=environment, stdout=subprocess.PIPE, check=True).stdout
        self.wfile.write(b"HTTP/1.0 200 OK\r\n" + output)

    do_POST = do_GET

    def log_message(self, *arguments):
        pass


server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
print(server.server_port, flush=True)
server.serve_forever()
