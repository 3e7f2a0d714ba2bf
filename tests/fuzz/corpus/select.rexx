select
 when a = 1 then nop
 otherwise
  select; when b then say 1; end
end
