# Draws vanderpol.png: gnuplot vanderpol.gnuplot
set term png size 720,450
set out 'vanderpol.png'
set key outside top center horizontal
set grid
set xlabel 'time'
set xrange [0:40]

# The program's header begins with a #, which hides the names of the columns.
rows = '< varno -s 0.02 -t 40 vanderpol.varno 2>/dev/null | sed "s/^# //"'
plot rows using "clock":"x" with lines lw 2 title 'x', \
     rows using "clock":"v" with lines lw 2 title 'v'
