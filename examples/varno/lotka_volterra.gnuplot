# Draws lotka_volterra.png: gnuplot lotka_volterra.gnuplot
set term png size 720,450
set out 'lotka_volterra.png'
set key outside top center horizontal
set grid
set xlabel 'time'
set ylabel 'population'
set xrange [0:30]

# The program's header begins with a #, which hides the names of the columns.
rows = '< varno -s 0.05 -t 30 lotka_volterra.varno 2>/dev/null | sed "s/^# //"'
plot rows using "clock":"hares" with lines lw 2 title 'hares', \
     rows using "clock":"lynxes" with lines lw 2 title 'lynxes'
