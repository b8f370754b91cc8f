BASE="http://127.0.0.1:17731"
ORIGIN="https://pos.zemrak.example"

# الرمز المحفوظ من قبل، أو اقتران جديد
TOKEN="${ZEMRAK_PRINTER_TOKEN:-$(curl -sS -X POST "$BASE/v1/pair" -H "Origin: $ORIGIN" | jq -er '.token // error(.error.message)')}"

# أرسل الطلب نفسه مرتين: المعرّف نفسه، وورقة واحدة
for attempt in 1 2; do
  curl -sS -X POST "$BASE/v1/jobs" -H "Origin: $ORIGIN" -H "Authorization: Bearer $TOKEN" \
    -H "Content-Type: application/json" \
    -H "Idempotency-Key: order-1042-receipt" \
    -d '{"printer": "Kitchen", "kind": "commands", "commands": [{"type": "text", "text": "طلب 1042"}]}' \
    | jq -er --arg attempt "$attempt" '.job.id // error(.error.message) | "\($attempt): \(.)"'
done
