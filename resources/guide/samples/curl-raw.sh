# ESC @ ثم النص Hello ثم سطر جديد، وبعدها القص
api -X POST "$BASE/v1/jobs" -H "Content-Type: application/json" -d '{
  "printer": "Kitchen",
  "kind": "raw",
  "encoding": "hex",
  "data": "1b40 48656c6c6f 0a",
  "options": {"cut": true, "feedLines": 3}
}'
