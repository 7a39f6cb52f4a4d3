# Draws kinetics.png: gnuplot kinetics.gnuplot
set term png size 720,450
set out 'kinetics.png'
set key outside top center horizontal
set grid
set xlabel 'time [min]'
set ylabel 'concentration'
set xrange [0:12]

# The program's header begins with a #, which hides the names of the columns.
rows = '< varno -s 0.01 -t 12 kinetics.varno 2>/dev/null | sed "s/^# //"'
plot rows using "clock":"a" with lines lw 2 title 'a', \
     rows using "clock":"b" with lines lw 2 title 'b', \
     rows using "clock":"c" with lines lw 2 title 'c'
