# صورة receipt.png من المجلد الحالي، بعرض ورق 80 مم
base64 < receipt.png | jq -Rs '{
  printer: "Kitchen", kind: "image", data: .,
  options: {paperWidthMm: 80, dither: "threshold"}
}' | api -X POST "$BASE/v1/jobs" -H "Content-Type: application/json" --data-binary @-

# ملف invoice.pdf من المجلد الحالي
base64 < invoice.pdf | jq -Rs '{printer: "Kitchen", kind: "pdf", data: .}' \
  | api -X POST "$BASE/v1/jobs" -H "Content-Type: application/json" --data-binary @-
