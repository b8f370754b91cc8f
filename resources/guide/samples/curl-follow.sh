JOB_ID=$(api -X POST "$BASE/v1/jobs" -H "Content-Type: application/json" -d '{
  "printer": "Kitchen", "kind": "commands",
  "commands": [{"type": "text", "text": "طلب 1043"}]
}' | jq -nr 'input | .job.id // error(.error.message)')

# الحالة الآن
api "$BASE/v1/jobs/$JOB_ID"

# انتظر أول تغيّر في الحالة، 10 ثوانٍ على الأكثر
api "$BASE/v1/jobs/$JOB_ID?after=0&wait=10000"

# الإلغاء: ينجح قبل أن تبدأ الطباعة، وبعدها يكون الجواب not_cancellable
curl -sS -X DELETE "$BASE/v1/jobs/$JOB_ID" -H "Origin: $ORIGIN" -H "Authorization: Bearer $TOKEN" \
  | jq -nr 'input | if .job then .job.status
            elif .error.code == "not_cancellable" then .error.message
            else error(.error.message) end'
