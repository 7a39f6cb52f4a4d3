# Draws brusselator.png: gnuplot brusselator.gnuplot
set term png size 720,450
set out 'brusselator.png'
set key outside top center horizontal
set grid
set xlabel 'time'
set ylabel 'concentration'
set xrange [0:30]

# The program's header begins with a #, which hides the names of the columns.
rows = '< varno -s 0.02 -t 30 brusselator.varno 2>/dev/null | sed "s/^# //"'
plot rows using "clock":"x" with lines lw 2 title 'x', \
     rows using "clock":"y" with lines lw 2 title 'y'
