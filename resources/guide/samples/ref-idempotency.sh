BASE="http://127.0.0.1:17731"
ORIGIN="https://pos.zemrak.example"

# الرمز المحفوظ من قبل، وإلا فاقتران جديد
TOKEN="${ZEMRAK_PRINTER_TOKEN:-}"
if [ -z "$TOKEN" ]; then
  TOKEN=$(curl -sS -X POST "$BASE/v1/pair" -H "Origin: $ORIGIN" | jq -nr 'input | .token // error(.error.message)')
fi

# أرسل الطلب نفسه مرتين: الجوابان للوظيفة نفسها (id واحد)، والورقة واحدة
for attempt in 1 2; do
  echo "$attempt:"
  curl -sS --fail-with-body -w '\n' -X POST "$BASE/v1/jobs" \
    -H "Origin: $ORIGIN" -H "Authorization: Bearer $TOKEN" -H "Content-Type: application/json" \
    -H "Idempotency-Key: order-1042-receipt" \
    -d '{"printer": "Kitchen", "kind": "commands", "commands": [{"type": "text", "text": "طلب 1042"}]}'
done
