# Draws sir.png: gnuplot sir.gnuplot
set term png size 720,450
set out 'sir.png'
set key outside top center horizontal
set grid
set xlabel 'day'
set ylabel 'part of the population'
set xrange [0:120]

# The program's header begins with a #, which hides the names of the columns.
rows = '< varno -s 0.5 -t 120 sir.varno 2>/dev/null | sed "s/^# //"'
plot rows using "day":"susceptible" with lines lw 2 title 'susceptible', \
     rows using "day":"infected" with lines lw 2 title 'infected', \
     rows using "day":"recovered" with lines lw 2 title 'recovered'
