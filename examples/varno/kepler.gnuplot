# Draws kepler.png: gnuplot kepler.gnuplot
set term png size 720,450
set out 'kepler.png'
set key outside top center horizontal
set grid
set xlabel 'x'
set ylabel 'y'
set size ratio -1
set xrange [-0.3:2.1]
set yrange [-0.6:0.6]

# The program's header begins with a #, which hides the names of the columns.
rows = '< varno -s 0.005 -t 6.3 kepler.varno 2>/dev/null | sed "s/^# //"'
plot rows using "x":"y" with lines lw 2 title 'orbit', \
     '+' using (0):(0) every ::::0 with points pt 7 ps 2 title 'sun'
