"""A client's end of a WebSocket (RFC 6455), as far as the remote protocols of browsers need it, and
the commands that they take over it: JSON, answered by number."""
import base64
import json
import os
import socket
import struct
import urllib.parse

TEXT, CLOSE, PING, PONG = 1, 8, 9, 10


class RemoteError(Exception):
    """The browser refused a command, or ended the connection."""


class WebSocket:

    def __init__(self, address, timeout=60):
        parts = urllib.parse.urlsplit(address)
        self._socket = socket.create_connection((parts.hostname, parts.port), timeout)
        self._input = self._socket.makefile('rb')
        key = base64.b64encode(os.urandom(16)).decode()
        request = (f'GET {parts.path or "/"} HTTP/1.1\r\nHost: {parts.netloc}\r\n'
                   'Upgrade: websocket\r\nConnection: Upgrade\r\n'
                   f'Sec-WebSocket-Key: {key}\r\nSec-WebSocket-Version: 13\r\n\r\n')
        self._socket.sendall(request.encode())
        status = self._input.readline().decode('latin-1')
        while self._input.readline().strip():
            pass
        if ' 101 ' not in status:
            raise RemoteError(f'{address} answered: {status.strip()}')

    def close(self):
        self._input.close()
        self._socket.close()

    def send(self, text):
        self._send_frame(TEXT, text.encode())

    def receive(self):
        """The next message."""
        message = b''
        while True:
            last, kind, part = self._receive_frame()
            if kind == CLOSE:
                raise RemoteError('the browser ended the connection')
            if kind == PING:
                self._send_frame(PONG, part)
            elif kind != PONG:
                message += part
                if last:
                    return message.decode()

    def _send_frame(self, kind, payload):
        size = len(payload)
        if size < 126:
            head = struct.pack('>BB', 0x80 | kind, 0x80 | size)
        elif size < 1 << 16:
            head = struct.pack('>BBH', 0x80 | kind, 0x80 | 126, size)
        else:
            head = struct.pack('>BBQ', 0x80 | kind, 0x80 | 127, size)
        mask = os.urandom(4)
        masked = bytes(byte ^ mask[place % 4] for place, byte in enumerate(payload))
        self._socket.sendall(head + mask + masked)

    def _receive_frame(self):
        first, size = self._read(2)
        if size == 126:
            size, = struct.unpack('>H', self._read(2))
        elif size == 127:
            size, = struct.unpack('>Q', self._read(8))
        return first & 0x80, first & 0x0F, self._read(size)

    def _read(self, size):
        data = self._input.read(size)
        if len(data) < size:
            raise RemoteError('the browser ended the connection')
        return data


class Remote:
    """A browser that takes commands."""

    def __init__(self, address):
        self._socket = WebSocket(address)
        self._number = 0
        self._events = []

    def close(self):
        self._socket.close()

    def call(self, method, **parameters):
        """What the browser answers."""
        self._number += 1
        self._socket.send(json.dumps({'id': self._number, 'method': method, 'params': parameters}))
        while True:
            message = json.loads(self._socket.receive())
            if message.get('id') == self._number:
                break
            self._events.append(message)
        if 'error' in message:
            raise RemoteError(f'{method}: {message}')
        return message['result']

    def event(self, method, wanted):
        """The parameters of the first event of that name that is `wanted`, which it waits for."""
        while True:
            for place, event in enumerate(self._events):
                if event.get('method') == method and wanted(event['params']):
                    del self._events[place]
                    return event['params']
            self._events.append(json.loads(self._socket.receive()))
