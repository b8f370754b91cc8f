# مكان ملفات البرنامج على هذا الجهاز
RESOURCES="${ZEMRAK_RESOURCES:-/opt/zemrak-printer/resources}"

# اكتب نطاق موقعك. http://localhost:3000 مقبول أيضًا، وهو للتطوير على جهازك فقط
"$RESOURCES/node" "$RESOURCES/agent/bin/zemrak-local-print.mjs" allow-origin https://shop.example.com
