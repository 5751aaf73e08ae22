"""The files that browsers download, from a server on the loopback interface, slowly."""
import http.server
import io
import random
import sys
import tarfile
import threading
import time
import urllib.parse
import zipfile

SECONDS = 2  # that a download takes
PIECES = 20


def noise(size=600_000):
    return random.randbytes(size)


def zip_archive():
    archive = io.BytesIO()
    with zipfile.ZipFile(archive, 'w') as file:
        file.writestr('inside.bin', noise())
    return archive.getvalue()


def tar_archive():
    archive = io.BytesIO()
    with tarfile.open(fileobj=archive, mode='w:gz') as file:
        entry = tarfile.TarInfo('inside.bin')
        contents = noise()
        entry.size = len(contents)
        file.addfile(entry, io.BytesIO(contents))
    return archive.getvalue()


class Server(http.server.ThreadingHTTPServer):

    def handle_error(self, request, client_address):
        # A browser may leave at any time: a download was cancelled, say.
        if not isinstance(sys.exc_info()[1], ConnectionError):
            super().handle_error(request, client_address)


class DownloadServer:
    """Serves what `add` was given, and is a proxy that lets nothing through to other machines."""

    def __init__(self):
        self._files = {}
        self._held = set()
        self._ending = threading.Event()
        server = self

        class Handler(http.server.BaseHTTPRequestHandler):

            def do_GET(self):
                server._answer(self)

            def log_message(self, *arguments):
                pass

        self._http = Server(('127.0.0.1', 0), Handler)
        self._thread = threading.Thread(target=self._http.serve_forever, daemon=True)
        self._thread.start()

    @property
    def address(self):
        return f'http://127.0.0.1:{self._http.server_address[1]}'

    def add(self, name, contents, held=False):
        """Gives the address of a file. A held one is served by half, and then no further."""
        self._files['/' + name] = contents
        if held:
            self._held.add('/' + name)
        return f'{self.address}/{name}'

    def close(self):
        self._ending.set()
        self._http.shutdown()
        self._http.server_close()
        self._thread.join()

    def _answer(self, request):
        name = urllib.parse.unquote(request.path)
        contents = self._files.get(name)
        if contents is None:
            request.send_error(404)
            return
        request.send_response(200)
        request.send_header('Content-Type', 'application/octet-stream')
        request.send_header('Content-Disposition', f'attachment; filename="{name[1:]}"')
        request.send_header('Content-Length', str(len(contents)))
        request.end_headers()
        size = -(-len(contents) // PIECES)
        for start in range(0, len(contents), size):
            request.wfile.write(contents[start:start + size])
            if name in self._held and start > len(contents) // 2:
                self._ending.wait()
            if self._ending.wait(SECONDS / PIECES):
                return
