if a then {
  say 1
