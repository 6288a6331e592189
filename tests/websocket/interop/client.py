"""Python's `websockets` as the client of an echo server: "ok" and what was agreed upon, or what went wrong.

    client.py URL [COMPRESSION]      arguments of ClientPerMessageDeflateFactory, as JSON
"""
import asyncio
import json
import sys

import websockets
from websockets.extensions.permessage_deflate import ClientPerMessageDeflateFactory

SAMPLE = '{"id":7,"name":"Zoë 😀"}'


async def talk():
    options = json.loads(sys.argv[2] if len(sys.argv) > 2 else "false")
    extensions = [] if options is False else [ClientPerMessageDeflateFactory(**options)]
    async with websockets.connect(sys.argv[1], compression=None, extensions=extensions, subprotocols=["soap", "chat"],
                                  max_size=2**24) as socket:
        for size in (0, 1, 125, 126, 127, 65535, 65536, 1000000):
            for message in (SAMPLE * (size // 20), bytes([size % 256]) * size):
                await socket.send(message)
                assert await socket.recv() == message, size
        await (await socket.ping("are you there"))
        await socket.send(["one, ", "two"])
        assert await socket.recv() == "one, two"
        await socket.close(4002, "done, Zoë")
        assert socket.close_code == 4002, socket.close_code
        print("ok", socket.subprotocol, socket.response_headers.get("Sec-WebSocket-Extensions", ""))


asyncio.run(asyncio.wait_for(talk(), 20))
