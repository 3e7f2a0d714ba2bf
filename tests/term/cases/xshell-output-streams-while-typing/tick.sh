for i in 1 2 3 4 5 6 7 8; do
  echo tick$i
  sleep 0.25
done
