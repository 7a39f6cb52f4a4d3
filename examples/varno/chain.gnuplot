# Draws chain.png: gnuplot chain.gnuplot
set term png size 720,450
set out 'chain.png'
set key outside top center horizontal
set grid
set xlabel 'cell'
set ylabel 'temperature'
set xrange [0:101]

# One run for each time, with all cells on one line. The values are one step of 2 ahead of -t.
cells(tmax) = sprintf('< varno -s 2 -t %d -3 100 chain.varno 2>/dev/null', tmax)
plot for [time in '4 50 200 800'] cells(time - 2) matrix using ($1 + 1):3 with lines lw 2 \
     title 'time '.time
