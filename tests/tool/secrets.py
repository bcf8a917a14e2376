"""Plays with `xel play` at an ad server that knows all secrets of the request, repeats them in
everything that it sends, among controls and markup, and fails in many ways. Exits 1 if a secret is in
what the tool prints, or in its trace or report, or if a control or a script of the server's is.

    secrets.py XEL
"""
import http.server
import json
import pathlib
import re
import ssl
import subprocess
import sys
import tempfile
import threading
import urllib.parse

SECRETS = {"key": "KEYmark/1&x", "token": "TOKENmark 2%", "monitor": "MONITORmark-3",
           "ppid": "PPIDmark", "user": "USERmark4", "mail": "MAILmark@h", "likes": "plainmark",
           "zip": "98712345", "own": "OWNmark=1", "suffix": "SUFFIXmark%2F6"}
ADVERTISING_ID = "89abcdef-0123-4567-89ab-cdef01234567"
MARKS = ["KEYmark", "TOKENmark", "MONITORmark", "PPIDmark", "USERmark", "MAILmark", "plainmark",
         "98712345", "OWNmark", "SUFFIXmark", "89abcdef", "89ABCDEF"]
CONTROLS = "\x1b[2J\x1b]0;x\x07\r\x7f\u009b2J\n0:00 forged"
SCRIPT = "</script><script>hostile()"
PLAYLIST = "#EXTM3U\n#EXT-X-TARGETDURATION:4\n" + "#EXTINF:4,\ns.ts\n" * 5 + "#EXT-X-ENDLIST\n"
# The resolver itself refuses a label of more than 63 letters.
UNRESOLVABLE = SECRETS["user"] + "a" * 64 + ".invalid"
# What the server answers to the first request, and the tool's exit status then.
FAULTS = {"none": 0, "status": 1, "not JSON": 1, "loop": 1, "ftp": 1, "to http": 1, "no host": 1,
          "broken": 1}


def told():
    """All secrets, as they are and escaped."""
    values = [*SECRETS.values(), ADVERTISING_ID, ADVERTISING_ID.upper().replace("-", "")]
    quoted = [urllib.parse.quote(value, safe="") for value in values]
    return " ".join(values + quoted + [urllib.parse.quote(value) for value in quoted])


def query():
    return urllib.parse.urlencode({**SECRETS, "rdid": ADVERTISING_ID, "in": told()})


class Server(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    fault = "none"
    received = ""
    pings = 0

    def log_message(self, *_):
        pass

    def answer(self, status, body="", **headers):
        self.send_response(status)
        self.send_header("Content-Length", str(len(body.encode())))
        self.send_header("X-Told", told())
        for name, value in headers.items():
            self.send_header(name, value)
        self.end_headers()
        self.wfile.write(body.encode())

    def do_POST(self):
        here = f"https://{self.headers['Host']}"
        Server.received += str(self.headers) + self.rfile.read(
            int(self.headers["Content-Length"])).decode()
        locations = {"loop": f"{here}{self.path}", "ftp": f"ftp://h/{query()}",
                     "to http": f"http://127.0.0.1:1/?{query()}",
                     "no host": f"https://{UNRESOLVABLE}/?{query()}"}
        if self.fault in locations:
            return self.answer(307, told(), Location=locations[self.fault])
        if self.fault == "broken":
            self.wfile.write(("KEYmark/1&x " + told()).encode())
            self.close_connection = True
            return None
        if self.fault != "none":
            return self.answer(500 if self.fault == "status" else 200, told() + CONTROLS)
        return self.answer(200, json.dumps({
            "stream_id": told() + CONTROLS + SCRIPT, "stream_type": "on_demand", "subtitles": [{"language": told()}],
            "stream_manifest": f"{here}/main.m3u8?{query()}",
            "time_events_url": f"{here}/info?{query()}"}))

    def do_GET(self):
        here = f"https://{self.headers['Host']}"
        if self.path.startswith("/main.m3u8"):
            return self.answer(200, PLAYLIST)
        if not self.path.startswith("/info"):
            Server.pings += 1
            return self.answer(302 if "loop" in self.path else 404, told(), Location=self.path)
        urls = [f"{here}/seen?{query()}", f"{here}/loop?{query()}", f"https://127.0.0.1:1/?{query()}",
                f"not a URL {told()}", f"https://{UNRESOLVABLE}/?{query()}"]
        pings = "".join(f"<Impression><![CDATA[{url}]]></Impression>" for url in urls)
        vast = (f"<VAST><Ad id='1'><InLine><AdTitle><![CDATA[{SCRIPT} {told()}]]></AdTitle>{pings}"
                "</InLine></Ad></VAST>")
        return self.answer(200, json.dumps({
            "ads": {"a": {"break": "b", "position": 1, "duration": 4, "vast": vast}},
            "breaks": {"b": {"duration": 4, "ads": 1, "type": told()}},
            "cuepoints": [{"start": 4, "end": 8}],
            "times": {"4": [{"ad": "a", "type": "start"}], "7": [{"ad": "a", "type": "complete"}]}}))


def start_server(folder):
    subprocess.run(
        ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes",
         "-days", "2", "-subj", "/CN=127.0.0.1", "-addext", "subjectAltName=IP:127.0.0.1",
         "-keyout", folder / "key.pem", "-out", folder / "ca.pem"], check=True, capture_output=True)
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Server)
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(folder / "ca.pem", folder / "key.pem")
    server.socket = context.wrap_socket(server.socket, server_side=True)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return server


def play(xel, folder, server, *options):
    return subprocess.run(
        [xel, "play", "vod", "--content-source-id", "shows", "--video-id", "1", "--player", "clock",
         "--speed", "max", "--server", f"127.0.0.1:{server.server_port}", "--ca-file",
         folder / "ca.pem", "--monitor-id", SECRETS["monitor"], "--advertising-id", ADVERTISING_ID,
         "--ad-tag", f"ppid={SECRETS['ppid']}", "--ad-tag", f"xelfw_x={SECRETS['own']}",
         "--ad-tag", "cust_params=" + "&".join(
             f"{name}={SECRETS[name]}" for name in ("user", "mail", "likes", "zip")),
         "--manifest-suffix", f"tok={SECRETS['suffix']}&n=7", "--auth-token", SECRETS["token"],
         "--api-key", SECRETS["key"], *options],
        capture_output=True, text=True, check=False, timeout=60)


def check(what, text):
    """Texts that others see: no secrets, no markup of the server's; and lines that stay lines."""
    for mark in MARKS:
        if mark in text:
            at = text.index(mark)
            sys.exit(f"secrets: {what} has {mark}: {text[max(0, at - 200):at + 60]}")
    if re.search("[\\x00-\\x09\\x0b-\\x1f\\x7f-\\x9f]|\\n0:00 forged", text):
        sys.exit(f"secrets: {what} has a control character")


def expect(condition, message):
    if not condition:
        sys.exit(f"secrets: {message}")


def main():
    xel = sys.argv[1]
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        server = start_server(folder)
        for fault, status in FAULTS.items():
            Server.fault = fault
            for options in (["--redact-urls"], ["--json"]):
                trace = folder / "trace"
                done = play(xel, folder, server, *options, "--record", trace)
                what = f"fault {fault}, {options[-1]}"
                expect(done.returncode == status, f"{what}: status {done.returncode}: {done.stderr}")
                expect("redacted-" in trace.read_text(), f"{what}: the trace tells nothing")
                for part in (done.stdout, done.stderr, trace.read_text()):
                    check(what, part)
                reported = subprocess.run([xel, "report", trace, "-o", folder / "report.html"],
                                          capture_output=True, text=True, check=False)
                expect(reported.returncode == 0, f"{what}: no report: {reported.stderr}")
                page = (folder / "report.html").read_text()
                data = page.split('<script type="application/json" id="data">')[1].split("</script>")
                json.loads(data[0])  # It ends where the page's own element does.
                check(f"the report of {what}", data[0])
            expect("redacted-" in done.stdout or fault != "none", f"nothing is told: {done.stdout}")
        missing = [mark for mark in MARKS if mark not in urllib.parse.unquote(Server.received)
                   and mark not in ("KEYmark", "SUFFIXmark", "89abcdef")]
        expect(not missing and Server.pings > 4, f"the server never learned {missing}")

        Server.fault = "none"
        done = play(xel, folder, server, "--record", folder / "no" / "trace")
        expect(done.returncode == 1, "a session that is not recorded counts as recorded")
        expect(done.stderr.count("not recorded") == 1, f"it is not told: {done.stderr}")


if __name__ == "__main__":
    main()
