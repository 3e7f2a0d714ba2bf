select; otherwise; nop; end
