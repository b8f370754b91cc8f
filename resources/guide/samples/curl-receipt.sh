api -X POST "$BASE/v1/jobs" -H "Content-Type: application/json" -d '{
  "printer": "Kitchen",
  "kind": "commands",
  "jobName": "فاتورة 1042",
  "commands": [
    {"type": "text", "text": "مطعم الواحة", "align": "center", "bold": true, "size": [2, 2]},
    {"type": "text", "text": "قهوة عربية    12.00"},
    {"type": "text", "text": "تمر سكري      18.00"},
    {"type": "feed", "lines": 1},
    {"type": "barcode", "format": "code128", "data": "INV-1042"},
    {"type": "qr", "data": "https://shop.example.com/r/1042", "size": 6, "ec": "M"},
    {"type": "cut", "mode": "partial"}
  ],
  "options": {"maxWaitSeconds": 60}
}'
