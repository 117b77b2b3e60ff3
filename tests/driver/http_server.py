"""A web server on the loopback interface, for the tests of downloads: python3 http_server.py REQUESTS

Says its port and its process id on standard output. The head of each request is added to the file REQUESTS before it
is answered.
"""

import contextlib
import os
import socket
import sys

ORDERS = "<orders><order><n>1</n></order></orders>"


def answer(status, headers, body):
    return f"HTTP/1.1 {status}\r\n{headers}Connection: close\r\nContent-Length: {len(body)}\r\n\r\n{body}"


ANSWERS = {
    "/orders.xml": answer("200 OK", "", ORDERS),
    "/moved": answer("302 Found", "Location: /orders.xml\r\n", "<moved/>"),
    "/empty": answer("200 OK", "", ""),
    "/short": "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n<orders>",
    "/stalled": "HTTP/1.1 200 OK\r\n\r\n<orders>",
    "/silent": "",
    "/guarded": answer("401 Unauthorized", 'WWW-Authenticate: Basic realm="x"\r\n', "<no/>"),
}


def serve(client, requests):
    head = b""
    while b"\r\n\r\n" not in head:
        more = client.recv(4096)
        if not more:
            return
        head += more
    requests.write(head)
    path = head.split(b" ")[1].decode()
    if path == "/guarded" and b"Basic YW5uOnNlY3JldA==" in head:  # "ann:secret"
        path = "/orders.xml"
    client.sendall(ANSWERS.get(path, answer("404 Not Found", "", "<html><body>no such page</body></html>")).encode())
    while path == "/stalled" and client.recv(4096):
        pass


listening = socket.create_server(("127.0.0.1", 0))
print(listening.getsockname()[1], os.getpid(), flush=True)
with open(sys.argv[1], "ab", buffering=0) as requests:
    while True:
        with listening.accept()[0] as client, contextlib.suppress(OSError):  # who asked may leave
            serve(client, requests)
