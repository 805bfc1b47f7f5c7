# SPDX-License-Identifier: GPL-2.0-or-later
"""The HTTP server of a sandbox's repositories, on the loopback interface."""

import errno
import os
import re
import socketserver
import threading
import urllib.parse
from http.server import BaseHTTPRequestHandler, HTTPServer


class Request(object):
    """One entry of the request log: method, path and status of the answer."""

    def __init__(self, method, path, status):
        self.method = method
        self.path = path
        self.status = status

    def __repr__(self):
        return "%s %s -> %s" % (self.method, self.path, self.status)


class Server(socketserver.ThreadingMixIn, HTTPServer):
    """Serves the files below a directory, with one thread for each request.

    faults    path ("/sandbox-http/repodata/repomd.xml") -> callable(handler). The server calls the callable instead of
              sending the file. The callable answers through the handler (see the functions below), or returns without
              an answer, which closes the connection. A test may change this dictionary while the server runs.
    requests  the request log, oldest first.
    stopping  the event that stop() sets; a fault that waits must also wait for this event.
    """

    daemon_threads = True
    allow_reuse_address = True

    def __init__(self, directory, port=0):
        super(Server, self).__init__(("127.0.0.1", port), _Handler)
        self.directory = os.path.realpath(directory)
        self.faults = {}
        self.requests = []
        self.stopping = threading.Event()
        self._thread = threading.Thread(target=self.serve_forever, kwargs={"poll_interval": 0.02})
        self._thread.daemon = True

    @classmethod
    def preferring(cls, directory, port):
        """Returns a server on that port. If another process uses that port, the server uses another free port."""
        try:
            return cls(directory, port)
        except OSError as error:
            if error.errno != errno.EADDRINUSE:
                raise
            return cls(directory)

    @property
    def port(self):
        return self.server_address[1]

    @property
    def url(self):
        """The URL of the served directory, without a "/" at its end."""
        return "http://127.0.0.1:%d" % self.port

    def start(self):
        self._thread.start()

    def stop(self):
        self.stopping.set()
        self.shutdown()
        self._thread.join()
        self.server_close()

    def paths(self, status=None):
        """The requested paths, in order. If a status is given, only the paths whose answers had this status."""
        return [request.path for request in list(self.requests) if status in (None, request.status)]

    def handle_error(self, request, client_address):
        """Prints no traceback, because the clients of some tests hang up."""


class _Handler(BaseHTTPRequestHandler):
    server_version = "Sandbox"

    def do_GET(self):
        path = urllib.parse.unquote(urllib.parse.urlsplit(self.path).path)
        self._entry = Request(self.command, path, None)
        self.server.requests.append(self._entry)
        fault = self.server.faults.get(path)
        if fault is not None:
            fault(self)
        else:
            self.send_file()

    do_HEAD = do_GET

    def file_path(self):
        """The path of the requested file, or None if it is not a regular file below the served directory."""
        relative = self._entry.path.lstrip("/")
        path = os.path.realpath(os.path.join(self.server.directory, relative))
        inside = path.startswith(self.server.directory + os.sep)
        return path if inside and os.path.isfile(path) else None

    def send_file(self, alter=None, chunk=1 << 16, pause=0.0):
        """Answers with the file, or with 404.

        alter: bytes -> bytes, changes the content that is sent (the announced length remains that of the file);
        pause: seconds to wait after each chunk.
        """
        path = self.file_path()
        if path is None:
            self.send_error(404)
            return
        with open(path, "rb") as stream:
            content = stream.read()
        first = self._range_start(len(content))
        length = len(content) - first
        if alter is not None:
            content = alter(content)
        if first:
            self.send_response(206)
            self.send_header("Content-Range", "bytes %d-%d/%d" % (first, first + length - 1, first + length))
        else:
            self.send_response(200)
        self.send_header("Content-Type", "application/octet-stream")
        self.send_header("Content-Length", str(length))
        self.send_header("Accept-Ranges", "bytes")
        self.end_headers()
        if self.command == "HEAD":
            return
        for start in range(first, len(content), chunk):
            self.wfile.write(content[start:start + chunk])
            if pause:
                self.wfile.flush()
                if self.server.stopping.wait(pause):
                    return

    def _range_start(self, size):
        match = re.match(r"bytes=(\d+)-$", self.headers.get("Range", ""))
        start = int(match.group(1)) if match else 0
        return start if start < size else 0

    def send_response(self, code, message=None):
        self._entry.status = code
        super(_Handler, self).send_response(code, message)

    def log_message(self, format, *args):
        """Prints nothing, because the standard error of "sandbox run" belongs to its command."""


def status(code):
    """Returns a fault that answers with an HTTP error."""
    return lambda handler: handler.send_error(code)


def truncated(size):
    """Returns a fault that announces the whole file, sends only its first bytes and hangs up."""
    return lambda handler: handler.send_file(alter=lambda content: content[:size])


def corrupted():
    """Returns a fault that sends a file of the right size with every byte inverted."""
    return lambda handler: handler.send_file(alter=lambda content: bytes(255 - byte for byte in content))


def paced(bytes_per_second):
    """Returns a fault that sends the right file slowly."""
    chunk = max(1, bytes_per_second // 20)
    return lambda handler: handler.send_file(chunk=chunk, pause=chunk / bytes_per_second)


def hang():
    """Returns a fault that sends no answer until the server stops."""
    return lambda handler: handler.server.stopping.wait()
