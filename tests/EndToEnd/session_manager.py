"""The desktop's session, as programs on X know it: a session manager that lets them in and ends the session when told to.

Made with libSM, which Qt's own X plugin brings along."""
import ctypes
import select
import threading
import time
from ctypes import POINTER, c_char_p, c_int, c_ulong, c_void_p

ICE, SM = ctypes.CDLL("libICE.so.6"), ctypes.CDLL("libSM.so.6")
SAVE_LOCAL, SAVE_BOTH, ASK_NOBODY, ASK_ANYBODY = 1, 2, 0, 2
LOST = 1  # what processing messages says of a connection


def declared(library, name, result, *arguments):
    function = getattr(library, name)
    function.restype, function.argtypes = result, arguments
    return function


listen = declared(ICE, "IceListenForConnections", c_int, c_void_p, c_void_p, c_int, c_char_p)
socket_of_listener = declared(ICE, "IceGetListenConnectionNumber", c_int, c_void_p)
addresses = declared(ICE, "IceComposeNetworkIdList", c_char_p, c_int, c_void_p)
set_host_check = declared(ICE, "IceSetHostBasedAuthProc", None, c_void_p, c_void_p)
set_loss_handler = declared(ICE, "IceSetIOErrorHandler", c_void_p, c_void_p)
accept = declared(ICE, "IceAcceptConnection", c_void_p, c_void_p, c_void_p)
socket_of = declared(ICE, "IceConnectionNumber", c_int, c_void_p)
process = declared(ICE, "IceProcessMessages", c_int, c_void_p, c_void_p, c_void_p)
initialize = declared(SM, "SmsInitialize", c_int, c_char_p, c_char_p, c_void_p, c_void_p, c_void_p, c_int, c_char_p)
new_id = declared(SM, "SmsGenerateClientID", c_void_p, c_void_p)
registered = declared(SM, "SmsRegisterClientReply", c_int, c_void_p, c_void_p)
save_yourself = declared(SM, "SmsSaveYourself", None, c_void_p, c_int, c_int, c_int, c_int)
interact = declared(SM, "SmsInteract", None, c_void_p)
die = declared(SM, "SmsDie", None, c_void_p)
shutdown_cancelled = declared(SM, "SmsShutdownCancelled", None, c_void_p)
return_properties = declared(SM, "SmsReturnProperties", None, c_void_p, c_int, c_void_p)


class Callback(ctypes.Structure):
    _fields_ = [("call", c_void_p), ("data", c_void_p)]


class SessionManager:
    """Works on a thread of its own. `events` are what programs have done since the last forget() or end_session()."""

    def __init__(self):
        self.events, self.clients, self.connections, self.kept = [], [], [], []
        self.lock = threading.RLock()
        error = ctypes.create_string_buffer(256)
        everybody = self.kept_call(ctypes.CFUNCTYPE(c_int, c_char_p), lambda _host: 1)
        client = self.kept_call(ctypes.CFUNCTYPE(c_int, *[c_void_p] * 5), self.client_came)
        set_loss_handler(self.kept_call(ctypes.CFUNCTYPE(None, c_void_p), lambda _connection: None))
        count, listeners = c_int(), c_void_p()
        assert initialize(b"test", b"1", client, None, everybody, 256, error), error.value
        assert listen(ctypes.byref(count), ctypes.byref(listeners), 256, error), error.value
        self.listeners = [ctypes.cast(listeners, POINTER(c_void_p))[i] for i in range(count.value)]
        for each in self.listeners:
            set_host_check(each, everybody)
        self.address = addresses(count, listeners).decode()
        threading.Thread(target=self.run, daemon=True).start()

    def kept_call(self, kind, function):
        self.kept.append(kind(function))
        return ctypes.cast(self.kept[-1], c_void_p)

    def client_came(self, client, _data, mask, callbacks, _failure):
        def note(event, then=lambda: None, kind=ctypes.CFUNCTYPE(c_int, *[c_void_p] * 6)):
            def call(*_arguments):
                self.events.append(event)
                then()
                return 1
            return self.kept_call(kind, call)

        def let_in():
            registered(client, new_id(client))
            save_yourself(client, SAVE_LOCAL, 0, ASK_NOBODY, 0)

        def asked(_client, _data, calls_off):
            self.events.append("calls it off" if calls_off else "has asked")
        answers = [note("comes", let_in), note("asks", lambda: interact(client)),
                   self.kept_call(ctypes.CFUNCTYPE(None, c_void_p, c_void_p, c_int), asked), note("wants a save"),
                   note("wants a second phase"), note("saved"), note("goes", lambda: self.clients.remove(client)),
                   note("sets"), note("deletes"), note("gets", lambda: return_properties(client, 0, None))]
        table = ctypes.cast(callbacks, POINTER(Callback))
        for i, answer in enumerate(answers):
            table[i] = Callback(answer, None)
        ctypes.cast(mask, POINTER(c_ulong))[0] = (1 << len(answers)) - 1
        self.clients.append(client)
        return 1

    def run(self):
        while True:
            with self.lock:
                waiting = {socket_of_listener(each): each for each in self.listeners}
                talking = {socket_of(each): each for each in self.connections}
            ready = select.select([*waiting, *talking], [], [], 0.02)[0]
            with self.lock:
                for each in ready:
                    self.serve(waiting.get(each), talking.get(each))
            time.sleep(0.001)  # lets the others have the lock

    def serve(self, listener, connection):
        if listener:
            connection = accept(listener, ctypes.byref(c_int()))
            self.connections += [connection] if connection else []
        elif process(connection, None, None) == LOST:
            self.connections.remove(connection)

    def tell_all(self, function, *arguments):
        with self.lock:
            for client in self.clients:
                function(client, *arguments)

    def end_session(self, may_ask):
        self.events.clear()
        self.tell_all(save_yourself, SAVE_BOTH, 1, ASK_ANYBODY if may_ask else ASK_NOBODY, 0)

    def let_die(self):
        self.tell_all(die)

    def call_off(self):
        self.tell_all(shutdown_cancelled)

    def forget(self):
        with self.lock:
            self.clients.clear()
            self.events.clear()
