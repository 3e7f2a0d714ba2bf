echo started
sleep 1000 &
sleep 1000
