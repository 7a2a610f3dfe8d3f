"""A service that says yes to every request and writes each down, a line for the request and a line for its body."""
import http.server
import sys
import urllib.parse


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def answer(self):
        body = self.rfile.read(int(self.headers.get("Content-Length", 0))).decode()
        with open(sys.argv[1], "a", encoding="utf-8") as record:
            record.write(f"{self.command} {self.path}\n{urllib.parse.unquote_plus(body)}\n")
        self.send_response(200)
        self.send_header("Content-Type", "application/json")
        self.send_header("Content-Length", "2")
        self.end_headers()
        self.wfile.write(b"{}")

    do_GET = do_POST = do_PUT = do_DELETE = answer

    def log_message(self, *_):
        pass


server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
print(f"listening on http://127.0.0.1:{server.server_port}", flush=True)
server.serve_forever()
