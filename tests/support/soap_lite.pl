#!/usr/bin/perl
# A SOAP server or client for the tests, made with SOAP::Lite.
#
# usage: soap_lite.pl [URL NAMESPACE 1999|2001]
#
# Without arguments it prints a port of 127.0.0.1 and serves there until its standard input ends: the rpc form,
# in the generation of each request. The methods are those of the package Echo, in the namespace urn:echo; a
# SOAPAction, if there is one, has to be urn:echo#METHOD.
#
# With arguments it reads calls from standard input, each a line of JSON: [METHOD, [NAME, TYPE or null, VALUE],
# ...]. It prints for each {"result": VALUE} or {"fault": [CODE, TEXT]}, with every scalar as a string.
use strict;
use warnings;

package Echo;

use JSON::PP ();
use SOAP::Lite;

sub typed { return SOAP::Data->name('value')->type(@_) }

# Each gives back a value under the type of its name.
sub echoString { return typed(string => $_[1]) }
sub echoInt    { return typed(int => $_[1]) }
sub echoBase64 { return typed(base64 => $_[1]) }
sub echoDate   { return typed($SOAP::Constants::DEFAULT_XML_SCHEMA =~ /1999/ ? 'timeInstant' : 'dateTime', $_[1]) }

# Leaves the types to SOAP::Lite.
sub echo { return SOAP::Data->name(value => $_[1]) }

# What arrived, as a text in JSON: how this side understood it.
sub received { return typed(string => JSON::PP->new->canonical->convert_blessed->encode([@_[1 .. $#_]])) }

# A structure of a named type becomes an object of a class of that name.
sub Dictionary::TO_JSON { return {%{$_[0]}} }

# One structure at two places of an array: the reply refers to it.
sub twice {
    my $shared = {x => 1, list => [$_[1]]};
    return SOAP::Data->name(value => [$shared, $shared]);
}

sub divide {
    my (undef, $dividend, $divisor) = @_;
    return (SOAP::Data->name('quotient')->type(int => int($dividend / $divisor)),
            SOAP::Data->name('remainder')->type(int => $dividend % $divisor));
}

sub nothing { return }

# The point under a name in a namespace of its own.
sub transpose {
    my (undef, $point) = @_;
    return SOAP::Data->name('Point')->uri('urn:points')->prefix('p')->value(
        \SOAP::Data->value(SOAP::Data->name(x => $point->{y}), SOAP::Data->name(y => $point->{x})));
}

sub fault {
    die SOAP::Fault->faultcode($_[1])->faultstring($_[2])->faultdetail({reason => 'asked for'});
}

# The parameters come with the whole request as the last one, for its headers.
package Headers;

our @ISA = qw(SOAP::Server::Parameters);

sub received {
    my @headers = $_[-1]->headerof('//Header/*');
    return Echo::typed(string => join ' ', map { sprintf '{%s}%s=%s', $_->uri, $_->name, $_->value } @headers);
}

package main;

use HTTP::Daemon;
use IO::Select;
use MIME::Base64 ();
use SOAP::Lite::Deserializer::XMLSchema1999 ();
use SOAP::Transport::HTTP;

# The schema of 1999 names no such type, which services of that generation use all the same.
sub SOAP::Lite::Deserializer::XMLSchema1999::as_base64 { return MIME::Base64::decode_base64($_[1]) }

# Of its own accord it would send every text beyond ASCII as base64.
sub configured {
    $_[0]->typelookup->{$_} = [1000, sub { 0 }, "as_$_"] for qw(base64Binary base64);
    return $_[0];
}

sub data {
    my ($name, $type, $value) = @{$_[0]};
    # Bytes, that is; characters would be sent in UTF-8.
    utf8::downgrade($value) if defined $type && $type eq 'base64';
    my $data = SOAP::Data->name($name => $value);
    return defined $type ? $data->type($type) : $data;
}

sub stringify {
    my ($value) = @_;
    return [map { stringify($_) } @$value] if UNIVERSAL::isa($value, 'ARRAY');
    return {map { $_ => stringify($value->{$_}) } keys %$value} if UNIVERSAL::isa($value, 'HASH');
    return defined $value ? "$value" : undef;
}

sub call {
    my ($url, $namespace, $generation) = @_;
    my $json = JSON::PP->new->utf8->canonical->allow_nonref;
    my $soap = SOAP::Lite->proxy($url, timeout => 60)->uri($namespace)->xmlschema($generation)
        ->on_fault(sub { return $_[1] });
    configured($soap->serializer);
    while (my $line = <STDIN>) {
        my ($method, @parameters) = @{$json->decode($line)};
        my $reply = $soap->call($method, map { data($_) } @parameters);
        my $answer = !ref $reply    ? {failure => $soap->transport->status}
                   : $reply->fault  ? {fault => [stringify($reply->faultcode), stringify($reply->faultstring)]}
                   :                  {result => stringify($reply->result)};
        print $json->encode($answer), "\n";
    }
}

sub serve {
    my $soap = SOAP::Transport::HTTP::Server->new->serializer(configured(SOAP::Serializer->new))
        ->dispatch_with({'urn:echo' => 'Echo', 'urn:headers' => 'Headers'});
    my $daemon = HTTP::Daemon->new(LocalAddr => '127.0.0.1', LocalPort => 0, Listen => 64)
        or die "cannot listen: $!\n";
    print $daemon->sockport, "\n";
    my $select = IO::Select->new($daemon, \*STDIN);
    while (my @ready = $select->can_read) {
        last if grep { $_ == \*STDIN } @ready;
        my $connection = $daemon->accept or next;
        # One request on each connection, so that none waits behind another one that idles.
        if (my $request = $connection->get_request) {
            $connection->force_last_request;
            $soap->request($request);
            $soap->handle;
            $connection->send_response($soap->response);
        }
        $connection->close;
    }
}

$SIG{PIPE} = 'IGNORE';
$| = 1;
@ARGV ? call(@ARGV) : serve();
