/* A device with no room left: nothing written is silently lost. LINEOUT
   buffers, so the error shows at the latest when the stream is closed;
   EXECIO reports it through its return code. */
trace off
r1 = lineout('/dev/full', 'some text')
r2 = lineout('/dev/full')
say 'lineout then close:' r1 + r2 'line(s) not written'
x.1 = 'a'
'EXECIO 1 DISKW /dev/full (STEM x. FINIS'
say 'execio rc' rc
