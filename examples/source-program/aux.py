#!/usr/bin/python3
"""A source program for the AUX input, to begin with: it asks for its page, shows and hides it, takes keys, and comes back when the
engine or the bus was away. What it lacks is a picture: put it into `show`."""

import asyncio
import contextlib
import json
import os
import sys

from dbus_next import Message, MessageFlag, MessageType, Variant
from dbus_next.aio import MessageBus

import headunit_protocol as hu

DAEMON = {"destination": "org.freedesktop.DBus", "path": "/org/freedesktop/DBus", "interface": "org.freedesktop.DBus"}
ENGINE = hu.BUS_NAME + "AppMain"
AWAY = hu.engineAwayMs / 1000  # seconds without the engine or the bus, then the program ends
PAUSE = 0.1


def plain(value):
    """A bundle without the types of its values, as the command line of the start is already."""
    if isinstance(value, Variant):
        return plain(value.value)
    return {key: plain(each) for key, each in value.items()} if isinstance(value, dict) else value


class Program:
    def __init__(self, first):
        self.first = first  # what it was started for, until the engine knows it
        self.shown = hu.NUM_OF_PAGES  # as the engine was told; a page that was hidden may still be seen
        self.bus = None
        self.outgoing = asyncio.Queue()
        self.ended = asyncio.Event()
        self.patience = asyncio.get_running_loop().call_later(AWAY, self.ended.set)

    def wait_for_engine(self):
        self.patience.cancel()
        self.patience = asyncio.get_running_loop().call_later(AWAY, self.ended.set)

    def show(self, page):
        """Puts the page on the screen, in place of the one before it; NUM_OF_PAGES takes that off."""
        self.shown = page
        print("on the screen: page", page, flush=True)

    def post(self, what, arg1):
        self.outgoing.put_nowait(Message(destination=ENGINE, path=hu.ENDPOINT_PATH, interface=hu.ENDPOINT_INTERFACE, member="Post",
                                         signature="iiia{sv}", body=[what, arg1, 0, {}], flags=MessageFlag.NO_REPLY_EXPECTED))

    async def write(self):
        """One by one: handed more than the bus takes at once, the library breaks the connection off."""
        with contextlib.suppress(OSError, EOFError):  # what a bus that goes takes along is nobody's loss
            while True:
                await self.bus.send(await self.outgoing.get())

    def say_hello(self):
        self.wait_for_engine()
        self.post(hu.RMSG_APP_HELLO, hu.AppAuxIn)

    def obey(self, bundle):
        line = bundle.get(hu.commandLineKey)
        if not isinstance(line, dict) or not isinstance(line.get(hu.pageKey), int):
            return
        what, page = line.get(hu.typeKey), line[hu.pageKey]
        print("told:", what, page, flush=True)  # from a sourceEnter to its sourceExit the input is heard
        if what == hu.pageShow or (what == hu.sourceEnter and line.get(hu.onTopKey)):
            self.post(hu.RMSG_PAGE_REQUEST_SHOW, page)
        if what == hu.pageHide and page == self.shown != hu.NUM_OF_PAGES:
            self.post(hu.RMSG_PAGE_TOP_SHOWN, page)

    def hear(self, what, arg1, bundle):
        if what == hu.RMSG_APP_HELLO_ACK:
            self.patience.cancel()
            first, self.first = self.first, {}
            self.obey(first)
        elif what == hu.RMSG_ENGINE_STARTED:  # its screen is empty
            self.show(hu.NUM_OF_PAGES)
            self.say_hello()
        elif what == hu.RMSG_HEARTBEAT:
            self.post(hu.RMSG_HEARTBEAT_REPLY, hu.AppAuxIn)
        elif what == hu.RMSG_COMMAND_LINE:
            self.obey(plain(bundle))
        elif what == hu.RMSG_PAGE_SHOW:
            self.show(arg1)
            self.post(hu.RMSG_PAGE_SHOW_READY, arg1)
        elif what == hu.RMSG_PAGE_HIDE:
            self.shown = hu.NUM_OF_PAGES if arg1 == self.shown else self.shown  # seen until the next one is there
            self.post(hu.RMSG_PAGE_HIDE_READY, arg1)
        elif what == hu.RMSG_PAGE_COVERED and self.shown == hu.NUM_OF_PAGES:
            self.show(hu.NUM_OF_PAGES)
        elif what == hu.RMSG_KEY:
            print("key", arg1, flush=True)
        elif what == hu.RMSG_PAGE_NOTIFY:
            self.post(hu.RMSG_STATE_TO_SYSTEM, arg1)
        elif what == hu.RMSG_SOURCE_STOP:
            self.ended.set()

    def on_message(self, message):
        """True for what is the program's business, so that nobody answers it with an error."""
        is_post = message.message_type == MessageType.METHOD_CALL and message.member == "Post"
        is_to_all = message.message_type == MessageType.SIGNAL and message.interface == hu.ENDPOINT_INTERFACE
        if (is_post or is_to_all) and message.signature == "iiia{sv}":
            what, arg1, _, bundle = message.body
            self.hear(what, arg1, bundle)
        elif message.member == "NameOwnerChanged" and message.body[0] == ENGINE:
            self.say_hello()  # to nobody when the engine has gone
        return is_post

    async def connect(self):
        self.outgoing = asyncio.Queue()  # what the old bus has not taken is not for the new one
        # Without a name in the environment it is the session's.
        self.bus = await MessageBus(bus_address=os.environ.get("HEADUNIT_BUS")).connect()
        self.bus.add_message_handler(self.on_message)
        for rule in (f"type='signal',interface='{hu.ENDPOINT_INTERFACE}',member='Message'",
                     f"type='signal',member='NameOwnerChanged',arg0='{ENGINE}'"):
            await self.bus.call(Message(**DAEMON, member="AddMatch", signature="s", body=[rule]))
        await self.bus.request_name(hu.BUS_NAME + "AppAuxIn")
        self.say_hello()

    async def stay_on_the_bus(self):
        while True:
            try:
                await self.connect()
                writer = asyncio.create_task(self.write())
                try:
                    await self.bus.wait_for_disconnect()
                finally:
                    writer.cancel()
            except (OSError, EOFError):  # the bus is not there, or no longer
                pass
            if self.patience.cancelled():
                self.wait_for_engine()
            await asyncio.sleep(PAUSE)


async def main():
    first = json.loads(sys.argv[2]) if len(sys.argv) == 3 else {}  # behind --command-line
    program = Program(first)
    connection = asyncio.create_task(program.stay_on_the_bus())
    connection.add_done_callback(lambda _: program.ended.set())
    await program.ended.wait()
    if connection.done():
        connection.result()  # says what went wrong
    connection.cancel()
    if program.bus:
        program.bus.disconnect()  # the name goes with it


asyncio.run(main())
