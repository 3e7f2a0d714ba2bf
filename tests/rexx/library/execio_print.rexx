/* EXECIO PRINT: lines gathered for a printer become one job at FINIS; with
   no printer set up the job is a PDF document in the current folder. */
home = value('HOME', , 'ENVIRONMENT')
call chdir home
call value 'PRINTER', '', 'ENVIRONMENT'
call value 'LPDEST', '', 'ENVIRONMENT'

/* Bad printer names and operands, each with its message and RC 24. */
'EXECIO 1 PRINT a/b ( STRING x'
say 'slash' rc
'EXECIO 1 PRINT'
say 'none' rc
'EXECIO 1 PRINT * 0'
say 'linenum' rc
'EXECIO 1 PRINT * 1 Q'
say 'recfm' rc
'EXECIO 1 PRINT * ( FIND /x/'
say 'read option' rc

/* Three calls make one job: nothing is written before FINIS. */
line.1 = 'first line'
line.2 = 'second line'
line.0 = 2
'EXECIO 2 PRINT * ( STEM line. LINESPAGE 2'
say 'stem' rc exists('My Document.pdf')
push 'third line'
'EXECIO 1 PRINT * ( LINESPAGE 2'
say 'stack' rc exists('My Document.pdf')
'EXECIO 0 PRINT * ( FINIS'
say 'finis' rc exists('My Document.pdf')
pdf = charin('My Document.pdf', 1, chars('My Document.pdf'))
call stream 'My Document.pdf', 'c', 'close'
/* LINESPAGE 2 put the third line on a page of its own. */
say 'pages' (pos('/Count 2', pdf) > 0)
say 'text' (pos('(third line)', pdf) > 0) (pos('(first line)', pdf) > 0)

/* A second job gets a name of its own; one left open is printed at the end. */
push 'again'
'EXECIO 1 PRINT * ( FINIS'
say 'second' rc exists('My Document-2.pdf')
/* STRING takes the rest of the options as its text, FINIS included. */
'EXECIO 1 PRINT * ( STRING left open FINIS'
say 'open' rc exists('My Document-3.pdf')
exit

exists: return stream(arg(1), 'c', 'query exists') \= ''
