<?php
// A SOAP server for the tests, made with PHP's SoapServer: the document form, as orders.wsdl has it.
//
// Listens on a free port of 127.0.0.1, prints its number as the first line of standard output, and
// serves until its standard input ends.

class Orders
{
    public function add($request)
    {
        return ['sum' => $request->a + $request->b];
    }

    // What arrived, once as a text with the PHP types, once as it is.
    public function describe($request)
    {
        $line = $request->line;
        $seen = array_map(fn ($value) => is_string($value) ? bin2hex($value) : $value, (array)$line);
        return ['text' => json_encode($seen, JSON_PRESERVE_ZERO_FRACTION), 'line' => $line];
    }

    public function split($request)
    {
        return ['parts' => ['part' => explode($request->separator, $request->text)]];
    }

    public function refuse($request)
    {
        throw new SoapFault('Client', $request->reason, null, ['code' => 42]);
    }
}

// The body of a request on a connection, by its Content-Length; null if it does not come.
function readBody($connection): ?string
{
    $length = null;
    while (($line = fgets($connection)) !== false && rtrim($line) !== '') {
        if (stripos($line, 'content-length:') === 0) {
            $length = (int)substr($line, 15);
        }
    }
    return $line === false || $length === null ? null : stream_get_contents($connection, $length);
}

function answer(SoapServer $soap, string $body): string
{
    ob_start();
    $soap->handle($body);
    $reply = ob_get_clean();
    $status = strpos($reply, ':Fault>') === false ? '200 OK' : '500 Internal Server Error';
    return "HTTP/1.1 $status\r\nContent-Type: text/xml; charset=utf-8\r\nConnection: close\r\n" .
        'Content-Length: ' . strlen($reply) . "\r\n\r\n" . $reply;
}

$soap = new SoapServer(__DIR__ . '/orders.wsdl', ['cache_wsdl' => WSDL_CACHE_NONE]);
$soap->setClass('Orders');
$listener = stream_socket_server('tcp://127.0.0.1:0');
fwrite(STDOUT, substr(strrchr(stream_socket_get_name($listener, false), ':'), 1) . "\n");

while (true) {
    $ready = [$listener, STDIN];
    $none = null;
    stream_select($ready, $none, $none, null);
    if (in_array(STDIN, $ready, true)) {
        break;
    }
    $connection = stream_socket_accept($listener);
    $body = readBody($connection);
    if ($body !== null) {
        fwrite($connection, answer($soap, $body));
    }
    fclose($connection);
}
