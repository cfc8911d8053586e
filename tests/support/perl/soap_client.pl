#!/usr/bin/perl
# A SOAP client for the tests, made with SOAP::Lite.
#
# usage: soap_client.pl URL NAMESPACE 1999|2001
#
# Reads calls from standard input, each a line of JSON: [METHOD, [NAME, TYPE or null, VALUE], ...]. Prints
# for each a line of JSON: {"result": VALUE} or {"fault": [CODE, TEXT]}, with every scalar as a string.
use strict;
use warnings;

use JSON::PP ();
use MIME::Base64 ();
use SOAP::Lite;
use SOAP::Lite::Deserializer::XMLSchema1999 ();

# The schema of 1999 names no such type, which services of that generation use all the same.
sub SOAP::Lite::Deserializer::XMLSchema1999::as_base64 { return MIME::Base64::decode_base64($_[1]) }

my ($url, $namespace, $generation) = @ARGV;
my $json = JSON::PP->new->utf8->canonical->allow_nonref;
my $soap = SOAP::Lite->proxy($url, timeout => 60)->uri($namespace)->xmlschema($generation)
    ->on_fault(sub { return $_[1] });

# Of its own accord it would send every text beyond ASCII as base64.
$soap->serializer->typelookup->{base64Binary} = [1000, sub { 0 }, 'as_base64Binary'];
$soap->serializer->typelookup->{base64} = [1000, sub { 0 }, 'as_base64'];

sub data {
    my ($name, $type, $value) = @{$_[0]};
    # Bytes, that is; characters would be sent in UTF-8.
    utf8::downgrade($value) if defined $type && $type eq 'base64';
    my $data = SOAP::Data->name($name => $value);
    return defined $type ? $data->type($type) : $data;
}

sub stringify {
    my ($value) = @_;
    return undef unless defined $value;
    return [map { stringify($_) } @$value] if UNIVERSAL::isa($value, 'ARRAY');
    return {map { $_ => stringify($value->{$_}) } keys %$value} if UNIVERSAL::isa($value, 'HASH');
    return "$value";
}

$| = 1;
while (my $line = <STDIN>) {
    my ($method, @parameters) = @{$json->decode($line)};
    my $reply = $soap->call($method, map { data($_) } @parameters);
    my $answer = !ref $reply    ? {failure => $soap->transport->status}
               : $reply->fault  ? {fault => [stringify($reply->faultcode), stringify($reply->faultstring)]}
               :                  {result => stringify($reply->result)};
    print $json->encode($answer), "\n";
}
