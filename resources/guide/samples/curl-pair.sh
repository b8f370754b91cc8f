BASE="http://127.0.0.1:17731"
ORIGIN="https://pos.zemrak.example"

# ترسل طلبًا وتطبع الجواب، وتفشل إن أجابت الخدمة بخطأ
api() {
  curl -sS --fail-with-body -w '\n' -H "Origin: $ORIGIN" -H "Authorization: Bearer $TOKEN" "$@"
}

# تظهر نافذة موافقة على الجهاز، وتنتظر 60 ثانية
TOKEN=$(curl -sS -X POST "$BASE/v1/pair" -H "Origin: $ORIGIN" \
  -H "Content-Type: application/json" -d '{"clientName": "سكربت الطرفية"}' \
  | jq -nr 'input | .token // error(.error.message)')
api "$BASE/v1/hello"
