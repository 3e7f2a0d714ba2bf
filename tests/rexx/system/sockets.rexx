/* Sockets on the loopback: a TCP echo between a server and a client in
   one program, UDP datagrams, options, select, and the failures. */
fails = 0; n = 0
call check sockinit(), 0
srv = socket('AF_INET', 'SOCK_STREAM', 'IPPROTO_TCP')
call check srv >= 0, 1
call check setsockopt(srv, 'SOL_SOCKET', 'SO_REUSEADDR', 1), 0
call check getsockopt(srv, 'SOL_SOCKET', 'SO_REUSEADDR', 'v'), 0
call check v \= 0, 1
a.family = 'AF_INET'; a.port = 0; a.addr = '127.0.0.1'
call check sockbind(srv, 'a.'), 0
call check socklisten(srv, 5), 0
call check sockgetsockname(srv, 'me.'), 0
call check me.addr, '127.0.0.1'
cli = socksocket('AF_INET', 'SOCK_STREAM', 0)
to.family = 'AF_INET'; to.port = me.port; to.addr = '127.0.0.1'
call check sockconnect(cli, 'to.'), 0
conn = sockaccept(srv, 'peer.')
call check conn >= 0, 1
call check peer.addr peer.family, '127.0.0.1 AF_INET'
call check socksend(cli, 'hello there'), 11
r. = 0; r.0 = 1; r.1 = conn
call check sockselect('r.', '', '', 5), 1
call check r.0 r.1, 1 conn
call check sockioctl(conn, 'FIONREAD', 'waiting'), 0
call check waiting, 11
call check sockrecv(conn, 'got', 100), 11
call check got, 'hello there'
call check send(conn, translate(got)), 11
call check recv(cli, 'back', 100), 11
call check back, 'HELLO THERE'
call check sockgetpeername(cli, 'pn.'), 0
call check pn.port, me.port
call check setsockopt(cli, 'SOL_SOCKET', 'SO_LINGER', '1 5'), 0
call check getsockopt(cli, 'SOL_SOCKET', 'SO_LINGER', 'l'), 0
call check l, '1 5'
/* the peer closes: the receiver sees the end, not a hang */
call check sockclose(cli), 0
call check sockrecv(conn, 'rest', 100), 0
call check rest, ''
/* nothing waiting: select times out with none ready */
s2 = socket('AF_INET', 'SOCK_DGRAM', 'IPPROTO_UDP')
e.0 = 1; e.1 = s2
call check sockselect('e.', , , 1), 0
call check e.0, 0
call check closesocket(conn), 0
/* UDP datagrams */
b.family = 'AF_INET'; b.port = 0; b.addr = '127.0.0.1'
call check bind(s2, 'b.'), 0
call check getsockname(s2, 'u.'), 0
s3 = socket('AF_INET', 'SOCK_DGRAM', 17)
call check socksendto(s3, 'datagram', 'u.'), 8
call check sockrecvfrom(s2, 'dg', 100, 'from.'), 8
call check dg from.addr, 'datagram 127.0.0.1'
call check sockioctl(s3, 'FIONBIO', 1), 0
call check sockrecv(s3, 'none', 10), -1
call check errno, 'EWOULDBLOCK'
/* a closed port refuses */
call check sockclose(s2) sockclose(s3), '0 0'
gone = socket('AF_INET', 'SOCK_STREAM', 0)
call check sockconnect(gone, 'u.'), -1
call check errno, 'ECONNREFUSED'
call check socksock_errno(), 111
call sockclose gone
/* sockets that are not ours, or closed */
call check sockclose(srv), 0
call check sockclose(srv), -1
call check errno, 'EBADF'
call check socksend(1, 'x'), -1
call check sockrecv(12345, 'x', 1), -1
call check socksock_errno(), 9
/* lookups */
call check sockgethostbyname('localhost', 'h.'), 1
call check h.addr, '127.0.0.1'
/* argument faults */
signal on syntax name unix
x = socket('AF_UNIX', 'SOCK_STREAM', 0); call check 'no error', 'error'
unix: call check rc condition('D'), '88 SOCKET(): domain must be "AF_INET".'
signal on syntax name raw
x = socksocket('AF_INET', 'SOCK_RAW', 0); call check 'no error', 'error'
raw: call check rc, 89
signal on syntax name proto
x = socksocket('AF_INET', 'SOCK_STREAM', 'IPPROTO_XYZ'); call check 'no error', 'error'
proto: call check rc, 90
signal on syntax name level
x = socksetsockopt(0, 'IPPROTO_TCP', 'SO_DEBUG', 1); call check 'no error', 'error'
level: call check rc, 91
signal on syntax name opt
x = socksetsockopt(0, 'SOL_SOCKET', 'SO_NOTHING', 1); call check 'no error', 'error'
opt: call check rc, 92
signal on syntax name val
x = socksetsockopt(0, 'SOL_SOCKET', 'SO_LINGER', 'x'); call check 'no error', 'error'
val: call check rc, 93
q.family = 'AF_IPX'; q.port = 1; q.addr = '1.2.3.4'
signal on syntax name fam
x = sockbind(0, 'q.'); call check 'no error', 'error'
fam: call check rc condition('D'), '94 SOCKBIND(): family must be "AF_INET" or "PF_INET".'
q.family = 'PF_INET'; q.port = 'http'
signal on syntax name port
x = sockbind(0, 'q.'); call check 'no error', 'error'
port: call check rc condition('D'), '95 SOCKBIND(): invalid port "http".'
q.port = 80; q.addr = '300.1.1.1'
signal on syntax name addr
x = sockbind(0, 'q.'); call check 'no error', 'error'
addr: call check rc condition('D'), '96 SOCKBIND(): invalid address "300.1.1.1".'
say 'ok' n - fails 'of' n
exit
check: n = n + 1
  if arg(1) \== arg(2) then do; fails = fails + 1; say 'case' n': got "'arg(1)'", want "'arg(2)'"'; end
  return
