"""What the scripts of this folder share: a server, players, and what they said."""
import json
import ssl
import subprocess
import sys
import tempfile
import urllib.request

APP = "com.example.session"


def expect(condition, message):
    if not condition:
        sys.exit(f"{sys.argv[0].rsplit('/', 1)[-1]}: {message}")


class Server:
    """xel serve with media, until the block ends."""

    def __init__(self, xel, media, *options):
        self.process = subprocess.Popen([xel, "serve", "--port", "0", "--media", media, *options],
                                        stdout=subprocess.PIPE, text=True)
        self.url, self.ca_file = self.process.stdout.readline().split()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()

    def request(self, path, body=None):
        """The answer to a GET, or to a PUT of what is given."""
        request = urllib.request.Request(self.url + path, method="GET" if body is None else "PUT",
                                         data=None if body is None else json.dumps(body).encode())
        context = ssl.create_default_context(cafile=self.ca_file)
        with urllib.request.urlopen(request, context=context) as response:
            return json.load(response)

    def judged(self):
        """What it says of the pings in the end."""
        self.process.terminate()
        pings = self.process.stdout.read()
        expect(self.process.wait() == 0, "the pings differ from what the documents promise:\n" + pings)
        return pings


class Player:
    """xel play --json over GStreamer, with a trace."""

    def __init__(self, xel, server, *stream):
        self.xel = xel
        # A pipe that nobody reads meanwhile would stop it.
        self.output, self.trace = tempfile.TemporaryFile("w+"), tempfile.NamedTemporaryFile()
        self.process = subprocess.Popen(
            [xel, "play", *stream, "--player", "gstreamer", "--server",
             server.url.removeprefix("https://"), "--ca-file", server.ca_file, "--app-id", APP,
             "--json", "--record", self.trace.name, "--redact-urls"], stdout=self.output)

    def lines(self):
        """Its output, once it has ended as it should and its trace replays."""
        self.process.wait(timeout=150)
        self.output.seek(0)
        output = self.output.read()
        status = self.process.returncode
        expect(status == 0, f"xel play ended with {status}:\n{output}")
        lines = [json.loads(line) for line in output.splitlines()]
        failed = [line for line in lines if line["event"] == "pingResult" and line.get("error")]
        expect(not failed, f"pings failed: {failed}")
        replay = subprocess.run([self.xel, "replay", self.trace.name], capture_output=True, text=True,
                                check=False)
        expect(replay.returncode == 0, f"the replay differs:\n{replay.stdout}{replay.stderr}")
        return lines
