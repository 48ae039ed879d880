#!/usr/bin/perl
# Reads every .eml file of a folder with MIME-tools, which dies at what it finds wrong, and prints
# the decoded text parts' sizes. The exit status says whether every message could be read.
use strict;
use warnings;
use MIME::Parser;

my $failures = 0;
my @paths = glob("$ARGV[0]/*.eml");
for my $path (@paths) {
    my $parser = MIME::Parser->new;
    $parser->output_to_core(1);
    $parser->tmp_to_core(1);
    $parser->ignore_errors(0);
    my $entity = eval { $parser->parse_open($path) };
    my @problems = ($@ || (), $parser->results->errors, $parser->results->warnings);
    push @problems, 'ambiguous' if $entity && $entity->can('ambiguous_content') && $entity->ambiguous_content;
    for my $problem (@problems) {
        print "$path: $problem\n";
        ++$failures;
    }
}
print scalar(@paths), " messages\n";
exit($failures || !@paths ? 1 : 0);
