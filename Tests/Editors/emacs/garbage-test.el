;;; garbage-test.el --- Tests of when garbage is collected  -*- lexical-binding: t; -*-

;;; Code:

(require 'test-support)
(require 'status-support)

(defun garbage-stage-nonexistent (count)
  "Add COUNT files to the index that do not exist, so each of them is changed twice."
  (let ((id (test-git "rev-parse" "HEAD:b.txt")))
    (with-temp-buffer
      (dotimes (n count)
        (insert (format "100644 %s\tfolder/with-a-long-name/file%d\n" id n)))
      (should (eql 0 (call-process-region nil nil "git" nil nil nil
                                          "update-index" "--index-info"))))))

(defun garbage-restored-p (threshold)
  "Return non-nil if `gc-cons-threshold' is THRESHOLD again."
  (and (eql gc-cons-threshold threshold) (not nebgit-garbage--threshold)))

(ert-deftest garbage-is-collected-after-the-status-and-not-while-it-is-read ()
  (test-with-repository
    (garbage-stage-nonexistent 2100)
    (save-window-excursion
      (test-wait (not nebgit-garbage--threshold))
      (let ((threshold gc-cons-threshold) collections)
        (garbage-collect)
        (setq collections gcs-done)
        (nebgit-status)
        (test-wait (not nebgit-status--refreshing))
        (should (string-match-p "Staged changes (1999 or more)" (test-text)))
        (should (eql gcs-done collections))
        (test-wait (garbage-restored-p threshold))
        (should (> gcs-done collections))))))

(ert-deftest garbage-is-collected-as-usual-without-a-limit ()
  (test-with-repository
    (test-wait (not nebgit-garbage--threshold))
    (let ((nebgit-garbage-limit nil) (threshold gc-cons-threshold))
      (nebgit-garbage-request-begins)
      (should (garbage-restored-p threshold))
      (nebgit-garbage-request-ends))))

(ert-deftest garbage-keeps-the-threshold-of-another-program ()
  (test-wait (not nebgit-garbage--threshold))
  (let ((gc-cons-threshold gc-cons-threshold))
    (nebgit-garbage-request-begins)
    (should (eql gc-cons-threshold nebgit-garbage-limit))
    (setq gc-cons-threshold 12345678)
    (nebgit-garbage-request-ends)
    (test-wait (garbage-restored-p 12345678))))

(provide 'garbage-test)
;;; garbage-test.el ends here
