"""Runs the servers of tests/support as processes of their own."""
import os
import subprocess
import sys
import xmlrpc.client

SUPPORT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


class PeerProcess:
    """A server that prints its port and serves until its standard input ends."""
    scheme = "http"

    def __init__(self, program, script, *arguments):
        self.process = subprocess.Popen([program, os.path.join(SUPPORT, script), *arguments], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE)
        self.port = int(self.process.stdout.readline())

    def url(self, path="/RPC2"):
        return "%s://127.0.0.1:%d%s" % (self.scheme, self.port, path)

    def stop(self):
        self.process.stdin.close()
        self.process.wait()
        self.process.stdout.close()


class Peer(PeerProcess):
    """The XML-RPC server."""

    def __init__(self, *arguments):
        super().__init__(sys.executable, "python/xmlrpc_peer.py", *arguments)
        if "--tls" in arguments:
            self.scheme = "https"

    def ask(self, method):
        """The answer of a method without parameters, over a connection of its own."""
        with xmlrpc.client.ServerProxy(self.url()) as proxy:
            return getattr(proxy, method)()


class SOAPPeer(PeerProcess):
    """The SOAP server that takes the rpc form."""

    def __init__(self):
        super().__init__("perl", "perl/soap_peer.pl")


class SOAPDocumentPeer(PeerProcess):
    """The SOAP server that takes the document form."""

    def __init__(self):
        super().__init__("php", "php/soap_document_peer.php")
