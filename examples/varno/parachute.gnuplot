# Draws parachute.png: gnuplot parachute.gnuplot
set term png size 720,450
set out 'parachute.png'
set key outside top center horizontal
set grid
set xlabel 'time [s]'
set ylabel 'speed [m/s]'
set xrange [0:20]

# The program's header begins with a #, which hides the names of the columns.
rows = '< varno -s 0.02 -t 20 parachute.varno 2>/dev/null | sed "s/^# //"'
plot rows using "clock":"speed" with lines lw 2 title 'speed', \
     rows using "clock":(sqrt(80*9.81/0.25)) with lines lw 2 title 'sqrt(80*9.81/0.25) m/s'
