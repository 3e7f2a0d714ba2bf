/* A box with every kind of item: what the setters change and the getters
   give back, the lists' lines, and a box left mapped at the end. */
call dy_start
call dy_label 1, 0, 'Name:'
call dy_input 8, 0, 20, 'first'
call dy_input 8, 2, 0
call dy_tg 'Style', 1, 6, 0, 2, 7, 'Bold', 12, 7, 'Italic'
call dy_tg 'Align', 1, 9, 1, 2, 10, 'Left', 12, 10, 'Right', 22, 10, 'Centre'
call dy_ch 'Size:', 1, 12, 'small', 'medium', 'large'
fruit.0 = 3; fruit.1 = 'pear'; fruit.2 = 'apple'; fruit.3 = 'fig'
call dy_scl 1, 14, 3, 12, 'fruit', 'Multiple', 'Fruit'
call dy_scl 20, 14, 3, 12, 'fruit.', 'single'
call dy_button 2, 19, 'OK'
call dy_button 12, 19, 'Cancel'
h = dy_end('', 2, 1, 0, 'Every item', 'Nograb', 0, 10, 20, 30)
say 'map:' dy_map(h)
say 'input:' dy_vinput(h, 1)'|'dy_vinput(h, 2)'|'
call dy_sinput h, 2, 'two words'
say 'input 2 set:' dy_vinput(h, 2)
say 'toggles:' dy_vtg(h, 1, 'st') st.0 st.1 st.2
call dy_stg h, 1, 2, 1
say 'italic on:' dy_vtg(h, 1, 'st') st.1 st.2
say 'exclusive:' dy_vtg(h, 2, 'al') al.1 al.2 al.3
call dy_stg h, 2, 3, 1
say 'centre on:' dy_vtg(h, 2, 'al') al.1 al.2 al.3
say 'choice:' dy_vch(h, 1)
say 'choice set:' dy_sch(h, 1, 3) dy_vch(h, 1)
say 'bad choice:' dy_sch(h, 1, 4)'|' dy_vch(h, 1)
say 'bad toggle:' dy_stg(h, 1, 3, 1)'|'
/* Lists: nothing selected, then lines added with and without selection. */
say 'none:' dy_vscl(h, 1, 'sel')
call dy_ascl h, 1, 'plum', 0, 1
call dy_ascl h, 1, 'kiwi', 1, 1
say 'multiple:' dy_vscl(h, 1, 'sel', 'num') sel.1 num.1 sel.2 num.2
call dy_ascl h, 2, 'lime', 0, 1
call dy_ascl h, 2, 'date', 0, 1
say 'single:' dy_vscl(h, 2, 'sel', 'num') sel.1 num.1
call dy_rscl h, 2, 5, 'dates'
say 'replaced:' dy_vscl(h, 2, 'sel') sel.1
call dy_dscl h, 2, 1, 2
say 'deleted:' dy_vscl(h, 2, 'sel', 'num') sel.1 num.1
say 'past the end:' dy_dscl(h, 2, 9)'|' dy_pscl(h, 2, 0)'|' dy_ascl(h, 2, 'x', 9)'|'
say 'position:' dy_pscl(h, 2, 2)
/* Set from a stem, sorted: the selection goes. */
say 'sorted:' dy_sscl(h, 1, 'fruit', 1) dy_vscl(h, 1, 'sel')
call dy_ascl h, 1, 'zz', 0, 1
say 'after sort:' dy_vscl(h, 1, 'sel', 'num') sel.1 num.1
call dy_slabel h, 1, 'Your name:'
say 'colours:' dy_button_col(h, 2, 255, 0, 0, -1, -1, -1) dy_tg_color(h, 2, 0, 0, 0, 1, 1, 1)
say 'focus:' dy_focus(h, 5) 'header:' dy_header(h, 'Renamed')
say 'clip:' dy_clip('on the clipboard')
say 'dispatch:' dy_dispatch() 'beep:' dy_beep() 'refresh:' dy_refresh()
say 'folder: "'dy_folder()'"'
say 'unmap:' dy_unmap(h) 'mapped again:' (dy_map(h) \== '')
/* The box stays when the program ends: the owner destroys it, not the end. */
