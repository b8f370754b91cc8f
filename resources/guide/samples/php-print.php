<?php
const BASE = 'http://127.0.0.1:17731';
const ORIGIN = 'https://pos.zemrak.example';

function call(string $method, string $path, ?string $token = null, ?array $body = null, array $headers = []): array
{
    $headers[] = 'Origin: ' . ORIGIN;
    if ($token !== null) {
        $headers[] = "Authorization: Bearer $token";
    }
    $request = curl_init(BASE . $path);
    $options = [CURLOPT_CUSTOMREQUEST => $method, CURLOPT_RETURNTRANSFER => true, CURLOPT_TIMEOUT => 75, CURLOPT_NOPROXY => '*'];
    if ($body !== null) {
        $headers[] = 'Content-Type: application/json';
        $options[CURLOPT_POSTFIELDS] = json_encode($body, JSON_UNESCAPED_UNICODE | JSON_THROW_ON_ERROR);
    }
    curl_setopt_array($request, $options + [CURLOPT_HTTPHEADER => $headers]);
    $text = curl_exec($request);
    if ($text === false) {
        throw new RuntimeException('تعذر الوصول إلى خدمة الطباعة: ' . curl_error($request));
    }
    $status = curl_getinfo($request, CURLINFO_RESPONSE_CODE);
    $answer = json_decode($text, true, 512, JSON_THROW_ON_ERROR);
    if ($status >= 400) {
        throw new RuntimeException("$status {$answer['error']['code']}: {$answer['error']['message']}");
    }
    return $answer;
}

function printJob(string $token, array $job, string $key): array
{
    $job = call('POST', '/v1/jobs', $token, $job, ["Idempotency-Key: $key"])['job'];
    while (!in_array($job['status'], ['completed', 'failed', 'cancelled'], true)) {
        $job = call('GET', "/v1/jobs/{$job['id']}?after={$job['revision']}&wait=20000", $token)['job'];
    }
    if ($job['status'] !== 'completed') {
        throw new RuntimeException('لم تكتمل الطباعة: ' . ($job['errorCode'] ?? $job['status']));
    }
    return $job;
}

// المرة الأولى فقط: وافق على الجهاز خلال 60 ثانية، ثم احفظ الرمز في ملف .env
$token = getenv('ZEMRAK_PRINTER_TOKEN') ?: null;
if ($token === null) {
    $token = call('POST', '/v1/pair', null, ['clientName' => 'نظام PHP'])['token'];
    echo "ZEMRAK_PRINTER_TOKEN=$token\n";
}

// المفتاح: ضع معرّفًا ثابتًا من نظامك، كرقم الفاتورة، فلا يطبع تكرار الطلب خلال 10 دقائق ورقة ثانية. الوقت هنا للتجربة فقط
$done = printJob($token, [
    'printer' => 'Kitchen',
    'kind' => 'commands',
    'jobName' => 'فاتورة 1042',
    'commands' => [
        ['type' => 'text', 'text' => 'مطعم الواحة', 'align' => 'center', 'bold' => true, 'size' => [2, 2]],
        ['type' => 'text', 'text' => 'المجموع    30.00'],
        ['type' => 'cut'],
    ],
    'options' => ['copies' => 1],
], 'php-invoice-1042-' . hrtime(true));
echo "receipt: {$done['status']}\n";
