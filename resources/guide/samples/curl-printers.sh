# كل الطابعات وحالتها الفعلية
api "$BASE/v1/printers"

# طابعة واحدة: بمعرّفها أو اسمها أو اسمها المستعار
api "$BASE/v1/printers/Kitchen/status"

# صفحة اختبار
api -X POST "$BASE/v1/printers/Kitchen/test"
