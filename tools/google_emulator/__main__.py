# SPDX-License-Identifier: Apache-2.0
"""Command line: python3 tools/google_emulator [--port N] ..., or python3 -m google_emulator in tools/."""

import argparse
import os
import sys
import threading

if not __package__:
    sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
    __package__ = "google_emulator"

from google_emulator.book_specs import add_file
from google_emulator.samples import STATES
from google_emulator.server import Emulator


def parse_arguments(arguments):
    parser = argparse.ArgumentParser(prog="google_emulator", description="Google Sheets and Drive on 127.0.0.1")
    parser.add_argument("--port", type=int, default=0, help="0, the default, takes a free one")
    parser.add_argument("--port-file", metavar="FILE", help="write the port there as well")
    parser.add_argument("--certificate", metavar="FILE", help="serve HTTPS with this chain (PEM)")
    parser.add_argument("--key", metavar="FILE", help="its private key, where the chain's file does not have it")
    parser.add_argument("--state", choices=STATES, default="empty", help="files to start with")
    parser.add_argument("--exit-with-stdin", action="store_true", help="end when standard input is closed")
    parser.add_argument("--hint", action="store_true", help="print how to try it out, on standard error")
    return parser.parse_args(arguments)


def write_port_file(path, port):
    """The file appears at once and whole, so that whoever waits for it never reads half a number."""
    partial = f"{path}.{os.getpid()}"
    with open(partial, "w", encoding="ascii") as file:
        file.write(f"{port}\n")
    os.replace(partial, path)


def stop_when_closed(stream, emulator):
    while stream.read(4096):
        pass
    emulator.stop()


def print_hint(emulator, scheme):
    root = f"{scheme}://127.0.0.1:{emulator.port}"
    print(f"The service is at {root} until you press Ctrl-C. It takes the access token demo.", file=sys.stderr)
    for entry in emulator.service.drive.files.values():
        print(f"  {entry.name}: {entry.file_id}\n"
              f"  curl -H 'Authorization: Bearer demo' {root}/v4/spreadsheets/{entry.file_id}/values/A1:D12\n"
              f"  ZX_ACCESS_TOKEN=demo zxsheet --google-root {root} read gsheet:{entry.file_id}", file=sys.stderr)


def main():
    options = parse_arguments(sys.argv[1:])
    emulator = Emulator(options.port, options.certificate, options.key)
    for spec in STATES[options.state]():
        add_file(emulator.service.drive, spec)
    if options.port_file:
        write_port_file(options.port_file, emulator.port)
    print(f"PORT {emulator.port}", flush=True)
    if options.hint:
        print_hint(emulator, "https" if options.certificate else "http")
    if options.exit_with_stdin:
        threading.Thread(target=stop_when_closed, args=(sys.stdin.buffer, emulator), daemon=True).start()
    try:
        emulator.run()
    except KeyboardInterrupt:
        pass
    finally:
        emulator.server.server_close()


if __name__ == "__main__":
    main()
