# هل الخدمة تعمل؟
curl -sS --fail-with-body -w '\n' http://127.0.0.1:17731/v1/hello \
  -H "Origin: https://pos.zemrak.example"
