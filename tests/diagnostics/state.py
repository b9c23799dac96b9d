#!/usr/bin/python3
"""state.py ADDRESS: what the engine on this bus says of its state, as JSON. An example of a program that asks it."""
import asyncio
import json
import sys

from dbus_next.aio import MessageBus

NAME, PATH = "com.corvane.Diagnostics", "/com/corvane/Diagnostics"


async def main():
    bus = await MessageBus(bus_address=sys.argv[1]).connect()
    engine = bus.get_proxy_object(NAME, PATH, await bus.introspect(NAME, PATH)).get_interface(NAME)
    print(json.dumps({key: each.value for key, each in (await engine.call_state()).items()}))

asyncio.run(main())
