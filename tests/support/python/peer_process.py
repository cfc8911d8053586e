"""Runs xmlrpc_peer.py as a process of its own, and calls it for what it has counted."""
import os
import subprocess
import sys
import xmlrpc.client

SCRIPT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "xmlrpc_peer.py")


class Peer:
    def __init__(self, *arguments):
        self.scheme = "https" if "--tls" in arguments else "http"
        self.process = subprocess.Popen([sys.executable, SCRIPT, *arguments], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE)
        self.port = int(self.process.stdout.readline())

    def url(self, path="/RPC2"):
        return "%s://127.0.0.1:%d%s" % (self.scheme, self.port, path)

    def ask(self, method):
        """The answer of a method without parameters, over a connection of its own."""
        with xmlrpc.client.ServerProxy(self.url()) as proxy:
            return getattr(proxy, method)()

    def stop(self):
        """The end of its standard input ends the server."""
        self.process.stdin.close()
        self.process.wait()
        self.process.stdout.close()
