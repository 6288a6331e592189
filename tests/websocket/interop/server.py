"""Python's `websockets` as a server that echoes: prints its port, ends after a minute at the latest.

    server.py [COMPRESSION]      arguments of ServerPerMessageDeflateFactory, as JSON
"""
import asyncio
import json
import sys

import websockets
from websockets.extensions.permessage_deflate import ServerPerMessageDeflateFactory


async def serve(socket):
    async for message in socket:
        if message == "in parts":
            await socket.send(["one, ", "two, ", "three"])
        elif message == "goodbye":
            await socket.close(4001, "enough")
        else:
            await socket.send(message)


async def main():
    options = json.loads(sys.argv[1] if len(sys.argv) > 1 else "false")
    extensions = [] if options is False else [ServerPerMessageDeflateFactory(**options)]
    server = await websockets.serve(serve, "127.0.0.1", 0, compression=None, extensions=extensions,
                                    subprotocols=["chat"], max_size=2**24)
    print(server.sockets[0].getsockname()[1], flush=True)
    await asyncio.sleep(60)


asyncio.run(main())
