"""A receiver of OTLP logs over TLS: tls_receiver.py CERTIFICATE KEY CLIENTS

It takes everything, and writes its port to standard output when it is ready. CLIENTS is the file of certificates that
clients are to be from, or - for any client.
"""
import http.server
import ssl
import sys


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def do_POST(self):
        self.rfile.read(int(self.headers["Content-Length"]))
        self.send_response(200)
        self.send_header("Content-Length", "0")
        self.end_headers()

    def log_message(self, *_):
        pass


class Server(http.server.ThreadingHTTPServer):
    def handle_error(self, *_):
        pass  # clients that do not trust it


server = Server(("127.0.0.1", 0), Handler)
context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
context.load_cert_chain(sys.argv[1], sys.argv[2])
if sys.argv[3] != "-":
    context.load_verify_locations(sys.argv[3])
    context.verify_mode = ssl.CERT_REQUIRED
server.socket = context.wrap_socket(server.socket, server_side=True)
print(server.server_address[1], flush=True)
server.serve_forever()
