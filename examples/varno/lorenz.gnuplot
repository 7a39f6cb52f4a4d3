# Draws lorenz.png: gnuplot lorenz.gnuplot
set term png size 720,450
set out 'lorenz.png'
set key outside top center horizontal
set grid
set xlabel 'x'
set ylabel 'z'

# The program's header begins with a #, which hides the names of the columns.
rows = '< varno -s 0.01 -t 40 lorenz.varno 2>/dev/null | sed "s/^# //"'
plot rows using "x":"z" with lines title 'z over x'
