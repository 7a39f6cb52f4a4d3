# Draws rc.png: gnuplot rc.gnuplot
set term png size 720,450
set out 'rc.png'
set key outside top center horizontal
set grid
set xlabel 'time [s]'
set ylabel 'voltage [V]'
set xrange [0:0.06]
set xtics 0.01
set yrange [0:5.5]

# The program's header begins with a #, which hides the names of the columns.
rows = '< varno -s 0.0002 -t 0.06 rc.varno 2>/dev/null | sed "s/^# //"'
plot rows using "clock":"voltage" with lines lw 2 title 'voltage', \
     rows using "clock":(5*(1 - exp(-1))) with lines lw 2 title '63 percent of 5 V'
