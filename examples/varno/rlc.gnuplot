# Draws rlc.png: gnuplot rlc.gnuplot
set term png size 720,450
set out 'rlc.png'
set key outside top center horizontal
set grid
set xlabel 'time [ms]'
set ylabel 'voltage [V], current [10 mA]'
set xrange [0:4]

# The program's header begins with a #, which hides the names of the columns.
rows = '< varno -s 5e-6 -t 0.004 rlc.varno 2>/dev/null | sed "s/^# //"'
plot rows using (1000*column("clock")):"voltage" with lines lw 2 title 'voltage', \
     rows using (1000*column("clock")):(100*column("current")) with lines lw 2 title 'current', \
     rows using (1000*column("clock")):(10*exp(-1000*column("clock"))) with lines lw 2 title 'envelope'
