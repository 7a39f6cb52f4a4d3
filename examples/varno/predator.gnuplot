# Draws predator.png: gnuplot predator.gnuplot
set term png size 720,450
set out 'predator.png'
set key outside top center horizontal
set grid
set xlabel 'time'
set ylabel 'population'
set xrange [0:60]

# The program's header begins with a #, which hides the names of the columns.
# There is no clock, which would never be steady: the values are one step of 0.1 ahead of TIME.
rows = '< varno -s 0.1 -t 60 predator.varno 2>/dev/null | sed "s/^# //"'
plot rows using (column("TIME") + 0.1):"prey" with lines lw 2 title 'prey', \
     rows using (column("TIME") + 0.1):"predators" with lines lw 2 title 'predators'
