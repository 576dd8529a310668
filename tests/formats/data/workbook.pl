# Writes the workbook that its input describes to the file that its argument names. A line per sheet or cell, its words
# parted by tabs:
#   sheet NAME
#   number|date|time|moment|text|blank ROW COLUMN VALUE    rows and columns from 0; dates and times as numbers of days
#   formula ROW COLUMN FORMULA RESULT
#   count ROWS COLUMNS                                     so many rows of the numbers 1, 2, 3 ...
use strict;
use warnings;
use Spreadsheet::WriteExcel;

binmode STDIN, ':encoding(UTF-8)';
my $book = Spreadsheet::WriteExcel->new($ARGV[0]) or die "$ARGV[0]: $!";
my %formats = map { $_->[0] => $book->add_format(num_format => $_->[1]) }
  (['date', 'yyyy-mm-dd'], ['time', 'hh:mm:ss'], ['moment', 'dd.mm.yyyy hh:mm:ss']);
my ($sheet, $number);
while (my $line = <STDIN>) {
  chomp $line;
  my ($kind, $row, $column, $value, $result) = split /\t/, $line, -1;
  if ($kind eq 'sheet') { $sheet = $book->add_worksheet($row) }
  elsif ($kind eq 'text') { $sheet->write_string($row, $column, $value) }
  elsif ($kind eq 'blank') { $sheet->write_blank($row, $column, $formats{date}) }
  elsif ($kind eq 'formula') { $sheet->write_formula($row, $column, $value, undef, $result) }
  elsif ($kind eq 'count') {
    for my $r (0 .. $row - 1) { $sheet->write_number($r, $_, ++$number) for 0 .. $column - 1 }
  }
  else { $sheet->write_number($row, $column, $value, $formats{$kind}) }
}
$book->close or die "$ARGV[0]: $!";
