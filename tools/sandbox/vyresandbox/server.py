"""The HTTP server that carries a sandbox's repositories on the loopback interface."""

import errno
import os
import re
import socketserver
import threading
import urllib.parse
from http.server import BaseHTTPRequestHandler, HTTPServer


class Request(object):
    """One entry of the request log: method, path and the status that was answered."""

    def __init__(self, method, path, status):
        self.method = method
        self.path = path
        self.status = status

    def __repr__(self):
        return "%s %s -> %s" % (self.method, self.path, self.status)


class Server(socketserver.ThreadingMixIn, HTTPServer):
    """Serves the files under a directory, one thread per request.

    faults    path ("/sandbox-http/repodata/repomd.xml") -> callable(handler). It is called instead of sending the
              file; it answers through the handler (see the functions below) or leaves the connection to close
              without an answer. May be changed while the server runs.
    requests  the request log, oldest first.
    stopping  set by stop(); a fault that waits watches it.
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
        """A server on that port, or on any free one when another process took it meanwhile."""
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
        """Of the served directory, without a "/" at its end."""
        return "http://127.0.0.1:%d" % self.port

    def start(self):
        self._thread.start()

    def stop(self):
        self.stopping.set()
        self.shutdown()
        self._thread.join()
        self.server_close()

    def paths(self, status=None):
        """The paths asked for, in order; only those answered with the status, when one is given."""
        return [request.path for request in list(self.requests) if status in (None, request.status)]

    def handle_error(self, request, client_address):
        """Clients that hang up are part of what is tested: not worth a traceback."""


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
        """Of the file asked for, or None when there is no such regular file under the served directory."""
        relative = self._entry.path.lstrip("/")
        path = os.path.realpath(os.path.join(self.server.directory, relative))
        inside = path.startswith(self.server.directory + os.sep)
        return path if inside and os.path.isfile(path) else None

    def send_file(self, alter=None, chunk=1 << 16, pause=0.0):
        """Answers with the file, or with 404.

        alter: bytes -> bytes, what is sent in place of the file's content (the length announced remains that of
        the file); pause: seconds to wait after every chunk of bytes.
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
        """The log is kept in memory: COMMAND's standard error belongs to COMMAND."""


def status(code):
    """A fault: answer with an HTTP error."""
    return lambda handler: handler.send_error(code)


def truncated(size):
    """A fault: announce the whole file, send only its first bytes and hang up."""
    return lambda handler: handler.send_file(alter=lambda content: content[:size])


def corrupted():
    """A fault: a file of the right size with every byte inverted."""
    return lambda handler: handler.send_file(alter=lambda content: bytes(255 - byte for byte in content))


def paced(bytes_per_second):
    """A fault: the right file, slowly."""
    chunk = max(1, bytes_per_second // 20)
    return lambda handler: handler.send_file(chunk=chunk, pause=chunk / bytes_per_second)


def hang():
    """A fault: no answer until the server stops."""
    return lambda handler: handler.server.stopping.wait()
