#!/usr/bin/python3
"""Another program's connectable advertisement on an adapter, until it is ended.

usage: advertise.py HCI
"""
import sys
import dbus, dbus.service, dbus.mainloop.glib
from gi.repository import GLib
PROPERTIES = 'org.freedesktop.DBus.Properties'
class Advertisement(dbus.service.Object):
    @dbus.service.method(PROPERTIES, in_signature='s', out_signature='a{sv}')
    def GetAll(self, interface): return {'Type': 'peripheral', 'LocalName': 'Other', 'Discoverable': True}
    @dbus.service.method('org.bluez.LEAdvertisement1')
    def Release(self): pass
dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus = dbus.SystemBus()
advertisement = Advertisement(bus, '/other/advertisement')
adapter = bus.get_object('org.bluez', '/org/bluez/' + sys.argv[1])
loop = GLib.MainLoop()
dbus.Interface(adapter, 'org.bluez.LEAdvertisingManager1').RegisterAdvertisement(
    '/other/advertisement', {}, reply_handler=lambda: print('another program advertises', flush=True),
    error_handler=lambda error: (print('it may not advertise:', error, flush=True), loop.quit()))
loop.run()
