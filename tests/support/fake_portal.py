'''The desktop portal's file chooser, as the PortalDialog tests need it.

A python-dbusmock template: the library claims the name, serves the object and
stays on the bus until the test ends it, so a caller that missed the answer
waits instead of being freed by the portal's going; we write only the answer.
Parameters: "record", the file that gets the call's arguments, one "key value"
line each, the value printed as D-Bus data; "answer": "<code> [uri]" sends the
Response signal with that code (and "uris") before the call's reply, as a fast
portal may; "vanish" replies, then leaves the bus with no answer.
'''
import dbus

BUS_NAME = 'org.freedesktop.portal.Desktop'
MAIN_OBJ = '/org/freedesktop/portal/desktop'
MAIN_IFACE = 'org.freedesktop.portal.FileChooser'
SYSTEM_BUS = False


def load(mock, parameters):
    mock.parameters = parameters


def show(v):  # "s", true, 7, b"bytes\0", [array], (struct)
    if isinstance(v, dbus.Boolean):
        return 'true' if v else 'false'
    if isinstance(v, str):
        return f'"{v}"'
    if isinstance(v, dbus.Array) and v.signature == 'y':
        return 'b"' + ''.join(chr(b) if b else '\\0' for b in v) + '"'
    if isinstance(v, (list, tuple)):
        return ('[{}]' if isinstance(v, list) else '({})').format(', '.join(map(show, v)))
    return str(v)


def respond(mock, call, reply, parent, title, options):
    with open(mock.parameters['record'], 'w', encoding='utf-8') as record:
        record.write(f'method {call.get_member()}\n')
        for key, value in [('parent', parent), ('title', title), *options.items()]:
            record.write(f'{key} {show(value)}\n')
    caller = call.get_sender()[1:].replace('.', '_')  # ":1.5" -> "1_5"
    handle = dbus.ObjectPath(f'{MAIN_OBJ}/request/{caller}/{options["handle_token"]}')
    code, *uris = mock.parameters['answer'].split()
    if code == 'vanish':
        reply(handle)
        mock.connection.release_name(BUS_NAME)
        return
    results = dbus.Dictionary({'uris': dbus.Array(uris, signature='s')} if uris else {}, signature='sv')
    mock.EmitSignalDetailed('org.freedesktop.portal.Request', 'Response', 'ua{sv}', [dbus.UInt32(code), results],
                            {'path': handle})
    reply(handle)


@dbus.service.method(MAIN_IFACE, 'ssa{sv}', 'o', message_keyword='call', async_callbacks=('reply', 'error'))
def OpenFile(self, parent, title, options, call, reply, error):
    respond(self, call, reply, parent, title, options)


@dbus.service.method(MAIN_IFACE, 'ssa{sv}', 'o', message_keyword='call', async_callbacks=('reply', 'error'))
def SaveFile(self, parent, title, options, call, reply, error):
    respond(self, call, reply, parent, title, options)
