# The key mix of the page benchmarks, sourced by them: 25 rounds of a page
# forward, five lines down, eight characters typed into a line, ENTER, a
# page back and two wheel turns, as key script lines (450 keys in all).
key_mix() {
  for _ in $(seq 1 25); do
    printf 'key f8\n'
    for _ in 1 2 3 4 5; do printf 'key downarrow\n'; done
    printf 'type abcdefgh\n'
    printf 'key enter\n'
    printf 'key f7\n'
    printf 'wheel down\n'
    printf 'wheel down\n'
  done
}
key_mix_keys=450
