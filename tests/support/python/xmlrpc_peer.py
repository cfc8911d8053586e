#!/usr/bin/env python3
"""An XML-RPC server for the tests, made of Python's standard library only.

Listens on a free port of 127.0.0.1, prints its number as the first line of standard output, and
serves until its standard input ends. With --tls CERTIFICATE KEY it speaks https.

The path of the URL chooses how it misbehaves: see MISBEHAVIOURS.
"""
import argparse
import datetime
import socketserver
import ssl
import sys
import threading
import urllib.parse
import xmlrpc.client
import xmlrpc.server

GOOD_REPLY = xmlrpc.client.dumps((1,), methodresponse=True)
MISBEHAVIOURS = {
    # path: (status and reason, content type or None, body)
    "/status/404": ("404 Not Found", "text/html", "<html/>"),
    "/image": ("200 OK", "image/png", "\x89PNG"),
    "/garbage": ("200 OK", "text/xml", '<?xml version="1.0"?><methodResponse><params></methodResponse>'),
    "/other-document": ("200 OK", "text/xml", '<?xml version="1.0"?><catalogue/>'),
    "/nothing": ("200 OK", "text/xml", '<?xml version="1.0"?><methodResponse><params><param><value/></param></params></methodResponse>'),
    "/null-member": ("200 OK", "text/xml", '<?xml version="1.0"?><methodResponse><params><param><value><struct><member><name>a</name><value/></member></struct></value></param></params></methodResponse>'),
    "/doubles": ("200 OK", "text/xml", '<?xml version="1.0"?><methodResponse><params><param><value><array><data>'
                 '<value><double>nan</double></value><value><double>inf</double></value><value><double>0.30000000000000004</double></value>'
                 '</data></array></value></param></params></methodResponse>'),
    "/lines-in-fault": ("200 OK", "text/xml", '<?xml version="1.0"?>' + xmlrpc.client.dumps(xmlrpc.client.Fault(7, "one\ntwo\x7fthree")).split("?>")[-1]),
    "/fault-like-transport": ("200 OK", "text/xml", '<?xml version="1.0"?>' + xmlrpc.client.dumps(xmlrpc.client.Fault(-65794, "/BQStreamFault")).split("?>")[-1]),
}


class Counters:
    """What the server has seen."""

    def __init__(self):
        self.lock = threading.Lock()
        self.connections = 0


class Handler(xmlrpc.server.SimpleXMLRPCRequestHandler):
    protocol_version = "HTTP/1.1"
    current = threading.local()

    def setup(self):
        super().setup()
        with self.server.counters.lock:
            self.server.counters.connections += 1

    def do_POST(self):
        Handler.current.request = self
        path = urllib.parse.urlsplit(self.path).path
        if path == "/redirect":
            self.answer("307 Temporary Redirect", None, "", {"Location": "/RPC2"})
        elif path == "/silence":
            # Holds the connection until the caller gives up.
            self.read_body()
            self.rfile.read(1)
            self.close_connection = True
        elif path == "/hang-up":
            self.read_body()
            self.close_connection = True
        elif path == "/hang-up-early":
            self.close_connection = True
        elif path == "/short":
            self.read_body()
            self.wfile.write(b"HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nContent-Length: 500\r\n\r\n<?xml")
            self.close_connection = True
        elif path == "/not-http":
            self.read_body()
            self.wfile.write(b"220 mail.example ready\r\n")
            self.close_connection = True
        elif path in MISBEHAVIOURS:
            self.answer(*MISBEHAVIOURS[path])
        else:
            super().do_POST()

    def is_rpc_path_valid(self):
        return True

    def read_body(self):
        return self.rfile.read(int(self.headers.get("Content-Length", 0)))

    def answer(self, status, content_type, body, headers=None):
        self.read_body()
        body = body.encode("latin-1")
        lines = ["HTTP/1.1 " + status, "Content-Length: %d" % len(body)]
        if content_type is not None:
            lines.append("Content-Type: " + content_type)
        lines += ["%s: %s" % header for header in (headers or {}).items()]
        self.wfile.write(("\r\n".join(lines) + "\r\n\r\n").encode("latin-1") + body)


class Server(socketserver.ThreadingMixIn, xmlrpc.server.SimpleXMLRPCServer):
    daemon_threads = True
    request_queue_size = 256

    def __init__(self, tls):
        super().__init__(("127.0.0.1", 0), Handler, logRequests=False)
        self.counters = Counters()
        if tls:
            context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
            context.load_cert_chain(*tls)
            self.socket = context.wrap_socket(self.socket, server_side=True)

    def handle_error(self, request, client_address):
        """A caller that goes away in the middle is part of the tests."""


class Methods:
    def __init__(self, counters):
        self.counters = counters

    def echo(self, value=""):
        return value

    def echo_all(self, *values):
        return list(values)

    def add(self, a, b):
        return a + b

    def fault(self, code, text):
        raise xmlrpc.client.Fault(code, text)

    def types(self):
        return {
            "int": -2147483648,
            "double": -1234.5625,
            "boolean": True,
            "string": '<tag attr="x"> & \'single\' ]]> \u00e9 \u20ac \u65e5\u672c',
            "date": datetime.datetime(1998, 7, 17, 14, 8, 55),
            "base64": bytes(range(256)),
            "array": [1, "two", [3, [4.5, []]], {"five": 5}],
            "struct": {"z": 1, "a": {"list": [True, False]}},
        }

    def kind(self, value):
        """The Python type of what arrived, and its value in Python's own notation."""
        shown = value.data if isinstance(value, xmlrpc.client.Binary) else value
        return [type(value).__name__, str(shown) if isinstance(value, xmlrpc.client.DateTime) else repr(shown)]

    def request(self):
        """The request line and the headers of this very call."""
        request = Handler.current.request
        return {"line": request.requestline, "headers": dict(request.headers)}

    def connections(self):
        with self.counters.lock:
            return self.counters.connections


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--tls", nargs=2, metavar=("CERTIFICATE", "KEY"))
    server = Server(parser.parse_args().tls)
    server.register_instance(Methods(server.counters))
    server.register_introspection_functions()
    threading.Thread(target=server.serve_forever, daemon=True).start()
    print(server.server_address[1], flush=True)
    sys.stdin.buffer.read()


if __name__ == "__main__":
    main()
