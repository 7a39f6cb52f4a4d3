# Draws pendulum.png: gnuplot pendulum.gnuplot
set term png size 720,450
set out 'pendulum.png'
set key outside top center horizontal
set grid
set xlabel 'time [s]'
set ylabel 'phi [rad], omega [rad/s]'
set xrange [0:10]

# The program's header begins with a #, which hides the names of the columns.
rows = '< varno -s 0.02 -t 10 pendulum.varno 2>/dev/null | sed "s/^# //"'
plot rows using "clock":"phi" with lines lw 2 title 'phi', \
     rows using "clock":"omega" with lines lw 2 title 'omega'
