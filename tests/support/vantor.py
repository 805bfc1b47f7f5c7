# SPDX-License-Identifier: GPL-2.0-or-later
"""An HTTP server with repositories that requires a name and a password in the query of each URL.

.../vantor?NAMEKEY=NAME&PASSWORDKEY=PASSWORD&path=PATH names the file PATH below the served directory. The two keys can
have any names. Programs insert the name of a file either after PATH or before the "?"; the server accepts both.
"""
import os
import threading
import urllib.parse
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer


class VantorServer(ThreadingHTTPServer):
    """directory  the served directory
    users      maps each user name to its password
    requests   the requests so far: (host, path, name, password, status), oldest first
    """

    daemon_threads = True

    def __init__(self, directory, users):
        super().__init__(('127.0.0.1', 0), _Handler)
        self.directory = directory
        self.users = users
        self.requests = []
        self._thread = threading.Thread(target=self.serve_forever, kwargs={'poll_interval': 0.02}, daemon=True)
        self._thread.start()

    def stop(self):
        self.shutdown()
        self._thread.join()
        self.server_close()

    def url(self, path, name='', password='', host='127.0.0.1'):
        """The URL of a path. name and password: already encoded for a URL."""
        return 'http://{}:{}/vantor?user={}&secret={}&path={}'.format(host, self.server_port, name, password, path)

    def answers(self, path):
        """The host, name, password and status of every request below this path, oldest first."""
        return [(host, name, password, status) for host, found, name, password, status in list(self.requests)
                if found.startswith(path + '/')]


class _Handler(BaseHTTPRequestHandler):

    def do_GET(self):
        place, _, query = self.path.partition('?')
        begin, name, rest = place.partition('/vantor')
        fields = query.split('&', 2)
        if begin or not name or len(fields) != 3 or not fields[2].startswith('path='):
            self.send_error(400)
            return
        name, password = (urllib.parse.unquote(field.partition('=')[2]) for field in fields[:2])
        path = urllib.parse.unquote(fields[2][len('path='):] + rest)
        file = os.path.join(self.server.directory, path.lstrip('/'))
        status = 200
        if not name or self.server.users.get(name) != password:
            status = 403
        elif not os.path.isfile(file):
            status = 404
        host = self.headers['Host'].partition(':')[0]
        self.server.requests.append((host, path, name, password, status))
        if status != 200:
            self.send_error(status)
            return
        with open(file, 'rb') as stream:
            content = stream.read()
        self.send_response(status)
        self.send_header('Content-Length', str(len(content)))
        self.end_headers()
        if self.command == 'GET':
            self.wfile.write(content)

    do_HEAD = do_GET

    def log_message(self, *_):
        """Print nothing, because standard error belongs to the test."""
