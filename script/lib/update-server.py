#!/usr/bin/env python3
"""Serves an app's updates on the loopback, to the scripted session of the demo.

    update-server.py FOLDER GATE

Prints its port. The files of the folder are there under their names. Of what ends in ".tar.gz" the second part waits
until somebody opens the named pipe GATE for writing, so that the session can look at a download that is half way.
"""
import http.server
import pathlib
import sys

FOLDER = pathlib.Path(sys.argv[1])
GATE = sys.argv[2]
FIRST_PART = 0.58


class Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        file = FOLDER / pathlib.PurePosixPath(self.path).name
        if not file.is_file():
            self.send_error(404)
            return
        body = file.read_bytes()
        self.send_response(200)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        first = int(len(body) * FIRST_PART) if file.name.endswith(".tar.gz") else len(body)
        self.wfile.write(body[:first])
        self.wfile.flush()
        if first < len(body):
            with open(GATE, "rb"):
                pass
        self.wfile.write(body[first:])


server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
print(server.server_port, flush=True)
server.serve_forever()
