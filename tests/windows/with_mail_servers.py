#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: 2026 The Halvex developers
"""Runs a program beside mail servers with TLS, whose certificates come from two authorities made for it:

    tests/windows/with_mail_servers.py PROGRAM [ARGUMENT...]

The program finds in the folder HALVEX_MAIL_SERVERS:
    known.pem, unknown.pem   the certificates of the authorities
    servers.ini              NAME=PORT for each server, all on 127.0.0.1
    NAME.received            the lines that the server received under encryption
"""

import os
import socket
import ssl
import subprocess
import sys
import tempfile
import threading
from pathlib import Path

HERE = "IP:127.0.0.1"
# name: authority, names in the certificate, days that it is valid, encrypted from the start
SERVERS = {
    "starttls": ("known", HERE, 30, False),
    "tls": ("known", HERE, 30, True),
    "expired": ("known", HERE, -1, False),
    "expired-tls": ("known", HERE, -1, True),
    "other-host": ("known", "DNS:other.example", 30, False),
    "unknown-authority": ("unknown", HERE, 30, False),
}
REPLIES = {"EHLO": "250-mail\r\n250-STARTTLS\r\n250 AUTH LOGIN", "STARTTLS": "220 begin", "DATA": "354 send",
           "AUTH": "334 VXNlcm5hbWU6", "QUIT": "221 bye"}


def openssl(folder, *arguments):
    subprocess.run(("openssl", *arguments), cwd=folder, check=True, capture_output=True)


def make_authority(folder, name):
    openssl(folder, "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout", f"{name}.key", "-out", f"{name}.pem",
            "-days", "30", "-subj", f"/CN={name} authority")


def make_certificate(folder, name, authority, names, days):
    (folder / f"{name}.names").write_text(f"subjectAltName={names}")
    openssl(folder, "req", "-newkey", "rsa:2048", "-nodes", "-keyout", f"{name}.key", "-out", f"{name}.request",
            "-subj", "/CN=mail.test")
    openssl(folder, "x509", "-req", "-in", f"{name}.request", "-CA", f"{authority}.pem", "-CAkey", f"{authority}.key",
            "-CAcreateserial", "-out", f"{name}.crt", "-extfile", f"{name}.names", "-days", str(days))


def converse(connection, context, is_encrypted, received):
    """Accepts every mail. Replies to the lines of a login and of a mail's text by their place."""
    if is_encrypted:
        connection = context.wrap_socket(connection, server_side=True)
    lines = connection.makefile("rwb")
    login = []  # the replies to the lines of a login, which are not commands
    in_text = False

    def reply(text):
        lines.write(text.encode() + b"\r\n")
        lines.flush()

    reply("220 mail ready")
    while raw := lines.readline():
        line = raw.decode().rstrip("\r\n")
        if is_encrypted:
            received.write(line + "\n")
        if in_text:
            in_text = line != "."
            if not in_text:
                reply("250 accepted")
            continue
        if login:
            reply(login.pop(0))
            continue
        word = line.split(" ")[0]
        reply(REPLIES.get(word, "250 fine"))
        in_text = word == "DATA"
        if word == "AUTH":
            login = ["334 UGFzc3dvcmQ6", "235 welcome"]
        if word == "STARTTLS":
            connection = context.wrap_socket(connection, server_side=True)
            lines = connection.makefile("rwb")
            is_encrypted = True


def serve(listener, context, is_encrypted, received):
    while True:
        connection, _ = listener.accept()
        try:
            converse(connection, context, is_encrypted, received)
        except (OSError, UnicodeDecodeError) as error:  # the program ends connections that it does not trust
            print(f"{received.name}: {error}", file=sys.stderr)
        finally:
            connection.close()


def start_server(folder, name, authority, names, days, is_encrypted):
    make_certificate(folder, name, authority, names, days)
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.maximum_version = ssl.TLSVersion.TLSv1_2  # the newest that every Windows in use has
    context.load_cert_chain(folder / f"{name}.crt", folder / f"{name}.key")
    listener = socket.create_server(("127.0.0.1", 0))
    received = open(folder / f"{name}.received", "w", buffering=1)
    threading.Thread(target=serve, args=(listener, context, is_encrypted, received), daemon=True).start()
    return listener.getsockname()[1]


def main():
    with tempfile.TemporaryDirectory() as path:
        folder = Path(path)
        for authority in ("known", "unknown"):
            make_authority(folder, authority)
        ports = [f"{name}={start_server(folder, name, *server)}\n" for name, server in SERVERS.items()]
        (folder / "servers.ini").write_text("".join(ports))
        environment = os.environ | {"HALVEX_MAIL_SERVERS": f"Z:{path}"}
        sys.exit(subprocess.run(sys.argv[1:], env=environment).returncode)


if __name__ == "__main__":
    main()
