;;; status-support.el --- What the tests of the status share  -*- lexical-binding: t; -*-

;;; Code:

(require 'test-support)
(require 'nebgit)

(defmacro test-with-status (&rest body)
  "Run BODY in the status of `default-directory', once it is shown."
  (declare (indent 0))
  `(let ((case-fold-search nil))
     (save-window-excursion
       (nebgit-status)
       (test-wait-status)
       ,@body
       ;; git may be about to write when the test has seen what it waits for.
       (test-wait (not nebgit--changing)))))

(defun test-wait-status ()
  "Wait until the status shows what is on the disk."
  (test-wait (not nebgit-status--refreshing))
  (nebgit-status-refresh)
  (test-wait (not nebgit-status--refreshing)))

(defun test-text ()
  "Return the text of the buffer without properties."
  (buffer-substring-no-properties (point-min) (point-max)))

(defun test-go (text)
  "Go to the start of the line that contains TEXT."
  (goto-char (point-min))
  (search-forward text)
  (beginning-of-line))

(defmacro test-until (text &rest body)
  "Run BODY, and refresh the status until it matches TEXT, or does not match (not TEXT)."
  (declare (indent 1))
  `(progn
     ,@body
     (test-wait ,(if (eq (car-safe text) 'not)
                     `(not (string-match-p ,(cadr text) (test-text)))
                   `(string-match-p ,text (test-text))))))

(defmacro test-answering (answer &rest body)
  "Run BODY; all questions get ANSWER and are kept in `questions'."
  (declare (indent 1))
  `(let (questions)
     (ignore questions)
     (cl-letf (((symbol-function 'yes-or-no-p)
                (lambda (prompt) (push prompt questions) ,answer))
               ((symbol-function 'completing-read)
                (lambda (prompt &rest _) (push prompt questions) ,answer)))
       ,@body)))

(defvar test--start-watch nil
  "Function of no arguments that requests the watch of `test-delaying-watch'.")

(defmacro test-delaying-watch (&rest body)
  "Run BODY, in which `test-start-watch' requests the watch and nothing else does."
  (declare (indent 0))
  `(cl-letf* ((request (symbol-function 'nebgit-watch--request))
              ((symbol-function 'nebgit-watch--request)
               (lambda (&rest arguments)
                 (setq test--start-watch (apply-partially #'apply request arguments)))))
     ,@body))

(defun test-start-watch ()
  "Request the watch that `test-delaying-watch' delays."
  (funcall test--start-watch))

(provide 'status-support)
;;; status-support.el ends here
