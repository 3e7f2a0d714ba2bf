/* The registry on the settings store: values set, read back in their
   text forms, listed and deleted; roots without a store; bad forms. */
fails = 0; n = 0
hk = 'HKEY_CURRENT_USER'
call check registry_set(hk, 'SOFTWARE\Test', 'Name', 'plain text'), 0
call check registry_get(hk, 'SOFTWARE\Test', 'Name'), 'plain text'
call check registry_set(hk, 'SOFTWARE\Test', 'Count', 'dword:1F'), 0
call check registry_get(hk, 'SOFTWARE\Test', 'Count'), 'dword:0000001f'
call check registry_set(hk, 'SOFTWARE\Test', 'Bytes', 'HEX:1,a0,ff'), 0
call check registry_get(hk, 'SOFTWARE\Test', 'Bytes'), 'hex:01,a0,ff,'
call check registry_set(hk, 'SOFTWARE\Test', 'Multi', 'hex(7):41,00,00,'), 0
call check registry_get(hk, 'SOFTWARE\Test', 'Multi'), 'hex(7):41,00,00,'
call check registry_set(hk, 'SOFTWARE\Test', '', 'the default'), 0
call check registry_set(hk, 'SOFTWARE\Test', 'a=b', 'two'||'0a'x||'lines\'), 0
call check registry_get(hk, 'SOFTWARE\Test', 'a=b'), 'two'||'0a'x||'lines\'
call check registry_set(hk, 'SOFTWARE\Test', 'Name', 'replaced'), 0
call check registry_get(hk, 'SOFTWARE\Test', 'Name') rc, 'replaced 0'
call check registry_values(hk, 'SOFTWARE\Test', 'v.'), 0
call check v.0, 6
call check v.1 '/' v.1.value, 'Name / replaced'
call check v.5 '/' v.5.value, ' / the default'
/* a key with values gains a subkey and keeps its values */
call check registry_set(hk, 'SOFTWARE\Test\Sub key', 'x', 1), 0
call check registry_set(hk, 'SOFTWARE\Test\.hidden', 'y', 2), 0
call check registry_get(hk, 'SOFTWARE\Test', 'Count'), 'dword:0000001f'
call check registry_keys(hk, 'SOFTWARE\Test', 'k.'), 0
call check k.0 k.1 '/' k.2, '2 .hidden / Sub key'
call check registry_keys(hk, 'SOFTWARE', 'k.'), 0
call check k.0 k.1, '1 Test'
/* the window memory reads the same store */
call check registry_set(hk, 'SOFTWARE\NORDAVEN\VORTA\0x0', 'Ww', 100), 0
f = getenv('HOME')'/.config/vorta/HKEY_CURRENT_USER/SOFTWARE/NORDAVEN/VORTA/0x0'
call check linein(f), 'Ww=100'
/* deletions */
call check registry_del(hk, 'SOFTWARE\Test', 'Name'), 0
call check registry_get(hk, 'SOFTWARE\Test', 'Name') rc, '1 1'
call check registry_del(hk, 'SOFTWARE\Test', 'Name'), 1
call check registry_del(hk, 'SOFTWARE\Test'), 0
call check registry_keys(hk, 'SOFTWARE\Test', 'k.'), 1
call check registry_get(hk, 'SOFTWARE\Test\Sub key', 'x'), 1
/* refusals */
call check registry_del('HKEY_USERS', ''), 1
call check registry_del(hk, '\'), 1
call check registry_get('HKEY_LOCAL_MACHINE', 'SOFTWARE', 'x'), 1
call check registry_set(hk, 'SOFTWARE\Bad', 'd', 'dword:xyz'), 1
call check registry_set(hk, 'SOFTWARE\Bad', 'd', 'dword:123456789'), 1
call check registry_set(hk, 'SOFTWARE\Bad', 'h', 'hex:1,,2'), 1
call check registry_set(hk, 'SOFTWARE\Bad', 'h', 'hex(3):01'), 1
call check registry_keys(hk, 'SOFTWARE', 'k.') k.0, '0 1'
signal on syntax name badroot
x = registry_get('HKEY_NOWHERE', 'a', 'b'); call check 'no error', 'error'
badroot: call check condition('D'), 'REGISTRY_GET(): Invalid key. Must be one of the HKEY_CLASSES_ROOT, HKEY_CURRENT_CONFIG, HKEY_CURRENT_USER, HKEY_DYN_DATA, HKEY_LOCAL_MACHINE, HKEY_USERS.'
say 'ok' n - fails 'of' n
exit
check: n = n + 1
  if arg(1) \== arg(2) then do; fails = fails + 1; say 'case' n': got "'arg(1)'", want "'arg(2)'"'; end
  return
