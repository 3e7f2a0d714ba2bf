select
  when a then nop
